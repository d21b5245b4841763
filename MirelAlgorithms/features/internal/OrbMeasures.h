/// What ORB measures around a corner of its image pyramid.
#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Pixels on each side of a corner that `harrisResponse` reads.
inline constexpr int harrisReach = 4;

/// Corner measure of Harris and Stephens (1988), det M - 0.04 (trace M)^2, of a 7 x 7 window with Sobel gradients.
///
/// @param centre  the corner's pixel
/// @param step    pixels from row to row
float harrisResponse(const uchar* centre, std::ptrdiff_t step);

/// Disc of pixels whose moments give the orientation: half-width of each row, from the middle row to the last.
std::vector<int> discHalfWidths(int radius);

/// Orientation of a corner by the intensity centroid (Rosin 1999), degrees in [0, 360).
float intensityCentroidAngle(const uchar* centre, std::ptrdiff_t step, const std::vector<int>& halfWidths);

}  // namespace MirelAlgorithms
