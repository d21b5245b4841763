/// Smoothing of dense depth images.
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/Host.h>

#include <opencv2/core/mat.hpp>

namespace MirelAlgorithms {

/// Smooths a depth image in which 0 marks pixels without depth, without inventing depth at the borders of holes.
///
/// `smoothDenseMode` 1 filters by non-local means (Buades, Coll, Morel: "A non-local algorithm for image denoising",
/// CVPR 2005) with strength 3, a template window of `smoothDenseRadius` pixels and a search window of three times that;
/// every other mode by the median of a window of `smoothDenseRadius` pixels. Afterwards every pixel with a 0 in the
/// window of that size around it, as far as the window lies in the image, becomes 0.
///
/// @param in     CV_16UC1; may be a view; not written unless it is `out`
/// @param out    as large, CV_16UC1; may be `in`
/// @param attrs  `smoothDenseMode` (0), `smoothDenseRadius` (5, an odd width); null: defaults
/// @return       false, with `out` as it was, for an empty image, another type, more than two dimensions, and a window
///               below 1 or of even width
///
/// OpenCV's own error is passed on for medians wider than 5 pixels, which it refuses for 16 bits.
/// `std::invalid_argument` where its sums for non-local means would overflow: windows wider than 181 pixels, or
/// 9 window^2 columns(in) of 2^31 and more. `out` stays as it was. Any number of threads on their own outputs. Time
/// grows with the pixels; that of non-local means with the square of the window too.
MIREL_API bool smoothDenseZ16(const cv::Mat& in, cv::Mat& out, SmartPtr<AttrContainer> attrs);

}  // namespace MirelAlgorithms
