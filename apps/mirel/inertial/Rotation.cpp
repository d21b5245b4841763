#include "inertial/Rotation.h"

#include <algorithm>

namespace mirel {

namespace {

/// The same angles less whole turns.
cv::Vec3d turnedTo(cv::Vec3d angles, const cv::Vec3d& last) {
  for (int i = 0; i < 3; ++i) angles[i] += 2 * CV_PI * std::round((last[i] - angles[i]) / (2 * CV_PI));
  return angles;
}

}  // namespace

cv::Vec3d anglesNear(const cv::Vec4d& q, const cv::Vec3d& last) {
  const double x = q[0], y = q[1], z = q[2], w = q[3];
  const double a = std::atan2(2 * (w * x - y * z), 1 - 2 * (x * x + y * y));
  const double b = std::asin(std::clamp(2 * (x * z + w * y), -1.0, 1.0));
  const double c = std::atan2(2 * (w * z - x * y), 1 - 2 * (y * y + z * z));
  // Half a turn about the first and the last axis is taken back by the one between.
  const cv::Vec3d one = turnedTo({a, b, c}, last), other = turnedTo({a + CV_PI, CV_PI - b, c + CV_PI}, last);
  return cv::norm(one - last) <= cv::norm(other - last) ? one : other;
}

}  // namespace mirel
