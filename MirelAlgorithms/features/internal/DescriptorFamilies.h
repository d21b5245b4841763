/// The descriptor families of OpenCV with this library's parameters.
#pragma once

#include <opencv2/features2d.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Descriptors of one family; key points that the family cannot describe are dropped, so that row i of `descriptors`
/// belongs to key point i.
///
/// @param function  for messages
/// @param family    1 AKAZE, 2 FREAK, 3 BRISK, 4 ORB; everything else LATCH of 32 bytes
/// @param image     8-bit grey, not empty; not written
///
/// Errors of OpenCV are passed on: AKAZE describes only key points it detected itself, so it refuses every other with
/// an error. LATCH or FREAK in a library that was built without xfeatures2d: `std::runtime_error`.
void describeByFamily(const char* function, int family, const cv::Mat& image, std::vector<cv::KeyPoint>& keyPoints,
                      cv::Mat& descriptors);

/// Drops key points with an infinite or NaN position or angle: some families would look for them in the image.
void keepFinite(std::vector<cv::KeyPoint>& keyPoints);

/// `family.compute` on the finite ones of these key points; without any the descriptors become empty.
void computeAligned(cv::Feature2D& family, const cv::Mat& image, std::vector<cv::KeyPoint>& keyPoints,
                    cv::Mat& descriptors);

/// Throws the `std::runtime_error` of a library that was built without xfeatures2d.
[[noreturn]] void refuseWithoutXfeatures2d(const char* function, const char* family);

}  // namespace MirelAlgorithms
