/// Image motion between two frames as a homography.
///
///     const MotionEstimate motion = MotionEstimate::estimate(from, to, {});
///     if (motion.isValid()) there = motion.apply(here);
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/Host.h>

#include <cstdint>
#include <limits>
#include <opencv2/core/matx.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Plane projective transformation between pairs of image points, fitted robustly, and figures of the fit.
///
/// `matrix` is H, which maps points of the first list to points of the second, about the centre c:
///
///     d = p - c,  s = 1 / (h20 * dx + h21 * dy + h22)
///     H(p) = ((h00 * dx + h01 * dy + h02) * s, (h10 * dx + h11 * dy + h12) * s) + c
///
/// What is fitted is the inverse mapping G, with g22 = 1, by the direct linear form (Hartley and Zisserman, "Multiple
/// View Geometry in Computer Vision", chapter 4): each pair (f, t), both about c, gives two equations
///
///     g00 tx + g01 ty + g02 - fx (g20 tx + g21 ty) = fx,   g10 tx + g11 ty + g12 - fy (g20 tx + g21 ty) = fy
///
/// times the weight of the pair, solved by robust least squares (see `Lsq`) with the threshold `motionQ`. The figures
/// `translation`, `scale`, `rotation` and `deviation` are those of G, that is, of the motion from the second frame
/// back to the first.
///
/// A plain value. Any number of threads may read one and call `estimate`.
struct MIREL_API MotionEstimate {
  double factor = 1.0;                                      ///< always 1
  double translation = 0.0;                                 ///< sqrt(g02^2 + g12^2), pixels
  double scale = 0.0;                                       ///< mean singular value of the upper left 2 x 2 block of G
  double rotation = 0.0;                                    ///< -atan2(g01, g00), radians
  double deviation = (std::numeric_limits<double>::max)();  ///< |G - identity|; the largest double: no motion
  double meanResidual = 1000.0;        ///< mean distance of H(from) from to, over all pairs, pixels
  double meanInlierResidual = 1000.0;  ///< the same over pairs that kept both equations; 10000 when there are none
  std::int32_t points = 0;             ///< pairs used
  std::int32_t outlierRows = 0;        ///< equations, two per pair, that the fit rejected
  double matrix[9] = {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0};  ///< H, row by row, h22 = 1; NaN: c at infinity
  double center[2] = {0.0, 0.0};                                     ///< c, pixels; directly behind the matrix

  /// Back to the values above: no motion.
  void reset();

  /// Fits a motion; c is the mean of all points of both lists.
  ///
  /// @param from     points of the first frame, pixels
  /// @param to       where they are in the second frame, in the same order
  /// @param weights  one per pair, or empty for 1 each
  /// @return         a motion that is not valid when the lists differ in length or have fewer than five pairs, when
  ///                 fewer than eight equations are left, when |det G| is below 2.2e-16 or not a number, and when no
  ///                 fit is found at all because coordinates or weights are not finite or their products overflow
  ///
  /// Throws std::invalid_argument when the lists fit each other but the weights do not. Time and memory grow with the
  /// number of pairs.
  static MotionEstimate estimate(const std::vector<SVec2d>& from, const std::vector<SVec2d>& to,
                                 const std::vector<double>& weights);

  /// The same about a given centre; one with a coordinate of 3.4028234663852886e38 (the largest float) or more stands
  /// for the mean of all points.
  static MotionEstimate estimate(const std::vector<SVec2d>& from, const std::vector<SVec2d>& to,
                                 const std::vector<double>& weights, const SVec2d& center);

  /// The same for points in single precision, computed in double precision.
  static MotionEstimate estimate(const std::vector<cv::Vec2f>& from, const std::vector<cv::Vec2f>& to,
                                 const std::vector<double>& weights);

  /// Whether there is a motion.
  bool isValid() const { return deviation != (std::numeric_limits<double>::max)(); }

  /// H(p); p itself when there is no motion.
  SVec2d apply(const SVec2d& point) const;

  /// The same, computed in double precision.
  cv::Vec2f apply(const cv::Vec2f& point) const;

  /// H(p) for a matrix and the centre behind it, eleven numbers; p itself for a null pointer.
  static SVec2d apply(const double* matrixAndCenter, const SVec2d& point);

  /// Threshold of the robust fit, in mean absolute residuals.
  static double motionQ() { return 3.5; }
};

}  // namespace MirelAlgorithms
