/// An order of points in which neighbours in the list are neighbours in the image.
#pragma once

#include <cstdint>
#include <opencv2/core/types.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Indices of the points, strip by strip from top to bottom, alternately from left to right and back. Runs of
/// `runLength` points then lie in areas about as wide as high. Points that are not finite come last. O(n).
std::vector<std::int32_t> spatialOrder(const std::vector<cv::KeyPoint>& points, std::size_t runLength);

}  // namespace MirelAlgorithms
