/// Sub-pixel maxima of a response map.
#pragma once

#include <MirelAlgorithms/features/internal/MaximumTest.h>

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace MirelAlgorithms {

/// out[x] = float(double(in[x]) * factor).
template <class T>
void scaleRow(const T* __restrict in, float* __restrict out, int n, double factor) {
  for (int x = 0; x < n; ++x) out[x] = static_cast<float>(in[x] * factor);
}

/// Maxima of the scaled map that lie at least 8 pixels from its edges, strongest first.
///
/// @param map     CV_32FC1
/// @param factor  positive; what every value is multiplied by before it is tested and fitted, see `scaleRow`
/// @return        x, y: extremum of a quadratic fitted to the 5x5 values around the maximum, less than 1.5 pixels from
///                it; size: 15; angle: the fit's x^2 coefficient, scaled so that the largest magnitude is 180;
///                response: the fit's value there, scaled so that the largest is 1
///
/// Equal responses are ordered by y, then x; responses that are no numbers come last.
std::vector<cv::KeyPoint> findCandidates(const cv::Mat& map, double factor, MaximumTest test);

}  // namespace MirelAlgorithms
