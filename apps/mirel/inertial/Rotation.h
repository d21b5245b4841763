/// Rotations as unit quaternions (x, y, z, w) that turn directions of the sensor into directions of the world.
#pragma once

#include <cmath>
#include <opencv2/core/matx.hpp>

namespace mirel {

inline cv::Vec4d conjugate(const cv::Vec4d& q) { return {-q[0], -q[1], -q[2], q[3]}; }

/// The rotation by `b`, then by `a`.
inline cv::Vec4d product(const cv::Vec4d& a, const cv::Vec4d& b) {
  const cv::Vec3d u(a[0], a[1], a[2]), v(b[0], b[1], b[2]);
  const cv::Vec3d w = a[3] * v + b[3] * u + u.cross(v);
  return {w[0], w[1], w[2], a[3] * b[3] - u.dot(v)};
}

inline cv::Vec3d rotate(const cv::Vec4d& q, const cv::Vec3d& v) {
  const cv::Vec4d r = product(product(q, {v[0], v[1], v[2], 0}), conjugate(q));
  return {r[0], r[1], r[2]};
}

/// Angle of the rotation, 0 to pi.
inline double angleOf(const cv::Vec4d& q) { return 2 * std::atan2(std::hypot(q[0], q[1], q[2]), std::abs(q[3])); }

/// Angle between two directions, 0 to pi.
inline double angleBetween(const cv::Vec3d& a, const cv::Vec3d& b) {
  return std::atan2(cv::norm(a.cross(b)), a.dot(b));
}

/// Angles (a, b, c) with q = Rx(a) Ry(b) Rz(c), radians. Of all such triples the one nearest to `last`, so that curves
/// of them do not jump.
cv::Vec3d anglesNear(const cv::Vec4d& q, const cv::Vec3d& last);

}  // namespace mirel
