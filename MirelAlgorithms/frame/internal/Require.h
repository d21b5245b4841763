/// Refusal of arguments: `std::invalid_argument` that says which argument, what was found and what is wanted.
#pragma once

#include <opencv2/core/mat.hpp>
#include <string>

namespace MirelAlgorithms {

/// Throws "<function>: <argument>: <found> given, <wanted> expected".
[[noreturn]] void refuse(const char* function, const char* argument, const std::string& found,
                         const std::string& wanted);

/// "CV_32FC1", or "empty" for a matrix without elements.
std::string describe(const cv::Mat& matrix);

/// Refuses everything but a non-empty 8-bit image of one channel.
void requireGrey8(const char* function, const char* argument, const cv::Mat& image);

/// Refuses values outside [least, most].
void requireRange(const char* function, const char* argument, long long value, long long least, long long most);

}  // namespace MirelAlgorithms
