/// Pixels without depth.
#pragma once

#include <opencv2/core/mat.hpp>

namespace MirelAlgorithms {

/// Sets the pixels of an image to 0 that have a 0 in the window around them in a depth image.
///
/// @param depth   CV_16UC1, not empty
/// @param window  odd width; the time grows with it where there are zeros
/// @param image   CV_16UC1, as large, not in the memory of `depth`
void clearNearHoles(const cv::Mat& depth, int window, cv::Mat& image);

}  // namespace MirelAlgorithms
