/// Matrices as text, for comparison with the hardware.
#pragma once

#include <opencv2/core/mat.hpp>
#include <string>

namespace MirelAlgorithms {

/// Writes every element row by row, one a line, with six significant digits and a decimal point whatever the locale.
///
/// @param matrix  one channel, CV_64F or CV_32F, else `std::invalid_argument`
/// @param path    overwritten; `std::runtime_error` when it cannot be opened
void cvMatToTxt(const cv::Mat& matrix, const std::string& path);

}  // namespace MirelAlgorithms
