/// Least-squares fit of a quadratic surface to 5x5 values, for sub-pixel positions of maxima.
#pragma once

#include <emmintrin.h>
#include <array>
#include <opencv2/core/mat.hpp>

namespace MirelAlgorithms {

/// 700 times f(x, y) = c[0] + c[1] x + c[2] y + c[3] x^2 + c[4] y^2 + c[5] x y, with (0, 0) at the window's centre.
struct QuadraticFit {
  std::array<double, 6> c;

  struct Point {
    double x, y;
  };

  /// Where the gradient vanishes; not finite where that is nowhere or on a line.
  Point extremum() const {
    const double denominator = 4.0 * c[3] * c[4] - c[5] * c[5];
    return {(c[2] * c[5] - 2.0 * c[1] * c[4]) / denominator, (c[1] * c[5] - 2.0 * c[2] * c[3]) / denominator};
  }

  double value(const Point& p) const {
    return c[0] + c[1] * p.x + c[2] * p.y + c[5] * p.x * p.y + c[3] * (p.x * p.x) + c[4] * (p.y * p.y);
  }
};

/// Rows of the pseudo-inverse of the 25 x 6 design matrix times 700, transposed: six coefficients for each value of the
/// window, row by row.
constexpr std::array<std::array<double, 6>, 25> quadraticKernels() {
  constexpr int mean[3] = {108, 88, 28};  // c0 along an axis through the centre, by distance
  std::array<std::array<double, 6>, 25> kernels{};
  for (int y = -2; y <= 2; ++y)
    for (int x = -2; x <= 2; ++x) {
      const int atX = mean[x < 0 ? -x : x], atY = mean[y < 0 ? -y : y];
      kernels[(y + 2) * 5 + x + 2] = {static_cast<double>(atX + atY - mean[0]),
                                      14.0 * x,
                                      14.0 * y,
                                      10.0 * (x * x - 2),
                                      10.0 * (y * y - 2),
                                      7.0 * x * y};
    }
  return kernels;
}

/// Fit to the 5x5 window around (x, y), which lies inside the CV_32FC1 map. Sums run row by row in double precision;
/// two of them share a register, which compilers do not find.
inline QuadraticFit fitQuadratic(const cv::Mat& map, int x, int y) {
  static constexpr auto kernels = quadraticKernels();
  const auto* kernel = kernels.data();
  __m128d c01 = _mm_setzero_pd(), c23 = c01, c45 = c01;
  for (int dy = -2; dy <= 2; ++dy) {
    const float* row = map.ptr<float>(y + dy) + x;
    for (int dx = -2; dx <= 2; ++dx, ++kernel) {
      const __m128d value = _mm_set1_pd(row[dx]);
      const double* k = kernel->data();
      c01 = _mm_add_pd(c01, _mm_mul_pd(_mm_loadu_pd(k), value));
      c23 = _mm_add_pd(c23, _mm_mul_pd(_mm_loadu_pd(k + 2), value));
      c45 = _mm_add_pd(c45, _mm_mul_pd(_mm_loadu_pd(k + 4), value));
    }
  }
  QuadraticFit fit;
  _mm_storeu_pd(&fit.c[0], c01);
  _mm_storeu_pd(&fit.c[2], c23);
  _mm_storeu_pd(&fit.c[4], c45);
  return fit;
}

}  // namespace MirelAlgorithms
