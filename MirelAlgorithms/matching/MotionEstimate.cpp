#include <MirelAlgorithms/frame/internal/Require.h>
#include <MirelAlgorithms/matching/LeastSquares.h>
#include <MirelAlgorithms/matching/MotionEstimate.h>

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <cstddef>

namespace MirelAlgorithms {
namespace {

constexpr std::size_t fewestPairs = 5;
constexpr int unknowns = 8;

static_assert(offsetof(MotionEstimate, center) == offsetof(MotionEstimate, matrix) + 9 * sizeof(double));

SVec2d toDouble(const SVec2d& p) { return p; }
SVec2d toDouble(const cv::Vec2f& p) { return {p[0], p[1]}; }

template <class Point>
SVec2d sumOf(const std::vector<Point>& points) {
  SVec2d sum;
  for (const Point& point : points) {
    const SVec2d p = toDouble(point);
    sum.x += p.x;
    sum.y += p.y;
  }
  return sum;
}

template <class Point>
SVec2d meanOf(const std::vector<Point>& from, const std::vector<Point>& to) {
  const SVec2d first = sumOf(from), second = sumOf(to);
  const double count = 2.0 * static_cast<double>(from.size());
  return {(first.x + second.x) / count, (first.y + second.y) / count};
}

/// Two equations per pair in the eight unknown elements of G.
struct Equations {
  std::vector<double> a, b;
};

template <class Point>
Equations equationsOf(const std::vector<Point>& from, const std::vector<Point>& to, const std::vector<double>& weights,
                      const SVec2d& center) {
  const std::size_t pairs = from.size();
  Equations equations{std::vector<double>(2 * unknowns * pairs), std::vector<double>(2 * pairs)};
  for (std::size_t i = 0; i < pairs; ++i) {
    const SVec2d first = toDouble(from[i]), second = toDouble(to[i]);
    const double fx = first.x - center.x, fy = first.y - center.y;
    const double tx = second.x - center.x, ty = second.y - center.y;
    const double w = weights.empty() ? 1.0 : weights[i];
    double* a = &equations.a[2 * unknowns * i];
    a[0] = a[unknowns + 3] = w * tx;
    a[1] = a[unknowns + 4] = w * ty;
    a[2] = a[unknowns + 5] = w;
    a[6] = -w * fx * tx;
    a[7] = -w * fx * ty;
    a[unknowns + 6] = -w * fy * tx;
    a[unknowns + 7] = -w * fy * ty;
    equations.b[2 * i] = w * fx;
    equations.b[2 * i + 1] = w * fy;
  }
  return equations;
}

/// Mean of the singular values of [[a, b], [c, d]]: their sum is twice the larger of the lengths of its rotating and
/// its mirroring part.
double meanSingularValue(double a, double b, double c, double d) {
  return std::max(std::hypot(a + d, c - b), std::hypot(a - d, b + c)) / 2.0;
}

void describeInverse(const Eigen::Matrix3d& g, MotionEstimate& motion) {
  const auto square = [](double value) { return value * value; };
  motion.translation = std::sqrt(square(g(0, 2)) + square(g(1, 2)));
  motion.rotation = -std::atan2(g(0, 1), g(0, 0));
  motion.deviation =
      std::sqrt(square(g(2, 2) - 1.0) + square(g(2, 1)) + square(g(2, 0)) + square(g(1, 1) - 1.0) + square(g(1, 2)) +
                square(g(0, 0) - 1.0) + square(g(0, 1)) + square(g(0, 2)) + square(g(1, 0)));
  motion.scale = meanSingularValue(g(0, 0), g(0, 1), g(1, 0), g(1, 1));
}

void storeMapping(const Eigen::Matrix3d& g, const SVec2d& center, MotionEstimate& motion) {
  const Eigen::Matrix3d h = g.inverse();
  for (int i = 0; i < 9; ++i) motion.matrix[i] = h(i / 3, i % 3) / h(2, 2);
  motion.center[0] = center.x;
  motion.center[1] = center.y;
}

/// @param outliers  rejected equations, ascending; pair i has the equations 2 i and 2 i + 1
template <class Point>
void measureResiduals(const std::vector<Point>& from, const std::vector<Point>& to,
                      const std::vector<std::int32_t>& outliers, MotionEstimate& motion) {
  double sum = 0.0, inlierSum = 0.0;
  std::size_t inliers = 0;
  auto outlier = outliers.begin();
  for (std::size_t i = 0; i < from.size(); ++i) {
    const SVec2d expected = toDouble(to[i]), mapped = MotionEstimate::apply(motion.matrix, toDouble(from[i]));
    const double residual = std::hypot(mapped.x - expected.x, mapped.y - expected.y);
    sum += residual;
    bool inlier = true;
    for (; outlier != outliers.end() && *outlier / 2 == static_cast<std::int32_t>(i); ++outlier) inlier = false;
    if (!inlier) continue;
    inlierSum += residual;
    ++inliers;
  }
  motion.meanResidual = sum / static_cast<double>(from.size());
  motion.meanInlierResidual = inliers > 0 ? inlierSum / static_cast<double>(inliers) : 10000.0;
}

template <class Point>
void requireWeights(const std::vector<Point>& from, const std::vector<double>& weights) {
  if (!weights.empty() && weights.size() != from.size())
    refuse("MotionEstimate::estimate", "weights", std::to_string(weights.size()) + " weights",
           "none or " + std::to_string(from.size()));
}

template <class Point>
bool enoughPairs(const std::vector<Point>& from, const std::vector<Point>& to) {
  return from.size() == to.size() && from.size() >= fewestPairs;
}

template <class Point>
MotionEstimate fit(const std::vector<Point>& from, const std::vector<Point>& to, const std::vector<double>& weights,
                   const SVec2d& center) {
  const Equations equations = equationsOf(from, to, weights, center);
  const int rows = static_cast<int>(equations.b.size());
  Eigen::Matrix<double, 3, 3, Eigen::RowMajor> g = Eigen::Matrix3d::Identity();
  Lsq solver;
  solver.lsq(equations.a.data(), equations.b.data(), g.data(), rows, unknowns, 1, MotionEstimate::motionQ(), 0.0);

  MotionEstimate motion;
  const bool solved = solver.rms() < (std::numeric_limits<double>::max)();
  if (!solved || rows - solver.outliers() < unknowns) return motion;
  if (!(std::abs(g.determinant()) >= std::numeric_limits<double>::epsilon())) return motion;
  motion.points = static_cast<std::int32_t>(from.size());
  motion.outlierRows = solver.outliers();
  describeInverse(g, motion);
  storeMapping(g, center, motion);
  measureResiduals(from, to, solver.outlier(), motion);
  return motion;
}

}  // namespace

void MotionEstimate::reset() { *this = MotionEstimate(); }

MotionEstimate MotionEstimate::estimate(const std::vector<SVec2d>& from, const std::vector<SVec2d>& to,
                                        const std::vector<double>& weights) {
  constexpr double computed = (std::numeric_limits<float>::max)();
  return estimate(from, to, weights, SVec2d(computed, computed));
}

MotionEstimate MotionEstimate::estimate(const std::vector<SVec2d>& from, const std::vector<SVec2d>& to,
                                        const std::vector<double>& weights, const SVec2d& center) {
  if (!enoughPairs(from, to)) return {};
  requireWeights(from, weights);
  constexpr double computed = (std::numeric_limits<float>::max)();
  const bool given = !(center.x >= computed || center.y >= computed);
  return fit(from, to, weights, given ? center : meanOf(from, to));
}

MotionEstimate MotionEstimate::estimate(const std::vector<cv::Vec2f>& from, const std::vector<cv::Vec2f>& to,
                                        const std::vector<double>& weights) {
  if (!enoughPairs(from, to)) return {};
  requireWeights(from, weights);
  return fit(from, to, weights, meanOf(from, to));
}

SVec2d MotionEstimate::apply(const SVec2d& point) const { return apply(isValid() ? matrix : nullptr, point); }

cv::Vec2f MotionEstimate::apply(const cv::Vec2f& point) const {
  if (!isValid()) return point;
  const SVec2d mapped = apply(matrix, SVec2d(point[0], point[1]));
  return {static_cast<float>(mapped.x), static_cast<float>(mapped.y)};
}

SVec2d MotionEstimate::apply(const double* matrixAndCenter, const SVec2d& point) {
  if (!matrixAndCenter) return point;
  const double* m = matrixAndCenter;
  const double* c = matrixAndCenter + 9;
  const double dx = point.x - c[0], dy = point.y - c[1];
  const double s = 1.0 / (m[6] * dx + m[7] * dy + m[8]);
  return {(m[0] * dx + m[1] * dy + m[2]) * s + c[0], (m[3] * dx + m[4] * dy + m[5]) * s + c[1]};
}

}  // namespace MirelAlgorithms
