/// The 128-bit descriptor of the fixed-point pipeline: comparisons of single pixels of the smoothed image.
#pragma once

#include <opencv2/core/mat.hpp>

namespace MirelAlgorithms {

/// Bytes of a fixed-point descriptor.
inline constexpr int fixedPointDescriptorBytes = 16;

/// Describes every feature at its position truncated to whole pixels.
///
/// The image, as 32-bit float, is smoothed by a separable Gaussian of 5 taps, sigma 1, border reflected without
/// repeating the edge pixel. Triplet k of the table compares three of its pixels, A, B and C: bit 2k is A < B, bit
/// 2k + 1 is C < B, lowest bit of a byte first. Pixels are addressed linearly, row * columns + column: left and right
/// of the image lies the previous or next row; addresses before the first or behind the last pixel read 0.
///
/// @param image        8-bit grey, not empty
/// @param features     feature matrix; positions that are NaN or do not fit a 32-bit integer read 0 throughout
/// @param descriptors  features x 16, CV_8UC1, row i for feature i
///
/// Parallel over the features.
void describeFixedPoint(const cv::Mat& image, const cv::Mat& features, cv::Mat& descriptors);

}  // namespace MirelAlgorithms
