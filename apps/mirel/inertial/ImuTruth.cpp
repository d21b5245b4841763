#include "inertial/ImuTruth.h"

#include "inertial/Rotation.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace mirel {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// The attitude at a time within the recording; near neighbours need no more than a straight line between them.
cv::Vec4d interpolate(const AttitudeRecording& truth, double time) {
  const std::vector<double>& t = truth.time.seconds;
  const auto after = std::upper_bound(t.begin(), t.end(), time) - t.begin();
  const std::size_t j = std::clamp<std::size_t>(after, 1, std::max<std::size_t>(1, t.size() - 1));
  if (t.size() == 1) return truth.quaternion[0];
  const cv::Vec4d a = truth.quaternion[j - 1];
  cv::Vec4d b = truth.quaternion[j];
  if (a.dot(b) < 0) b = -b;
  return cv::normalize(a + (b - a) * ((time - t[j - 1]) / (t[j] - t[j - 1])));
}

/// The turn about the vertical that brings the truth nearest to the estimate.
cv::Vec4d headingBetween(const cv::Vec4d& truth, const cv::Vec4d& estimate) {
  const cv::Vec4d difference = product(estimate, conjugate(truth));
  const double length = std::hypot(difference[2], difference[3]);
  return length > 0 ? cv::Vec4d(0, 0, difference[2] / length, difference[3] / length) : cv::Vec4d(0, 0, 0, 1);
}

}  // namespace

ErrorSpread spreadOf(const std::vector<double>& values) {
  ErrorSpread spread;
  std::size_t count = 0;
  for (const double v : values) {
    if (std::isnan(v)) continue;
    spread.rms += v * v;
    spread.max = std::max(spread.max, std::abs(v));
    ++count;
  }
  if (count > 0) spread.rms = std::sqrt(spread.rms / static_cast<double>(count));
  return spread;
}

TruthComparison compare(const ImuRecording& recording, const ImuEstimate& estimate, const AttitudeRecording& truth) {
  constexpr double tolerance = 1e-6;  // s, of rounded time stamps
  const cv::Vec3d up(0, 0, 1);
  TruthComparison result;
  cv::Vec4d heading;
  for (std::size_t i = 0; i < estimate.attitude.size(); ++i) {
    const double time = recording.time.seconds[i];
    if (time < truth.time.seconds.front() - tolerance || time > truth.time.seconds.back() + tolerance) {
      result.attitude.push_back(cv::Vec4d::all(nan));
      result.angle.push_back(nan);
      result.gravity.push_back(nan);
      continue;
    }
    const cv::Vec4d is = estimate.attitude[i], known = interpolate(truth, time);
    if (result.compared++ == 0) heading = headingBetween(known, is);
    result.attitude.push_back(product(heading, known));
    result.angle.push_back(angleOf(product(conjugate(result.attitude.back()), is)));
    result.gravity.push_back(angleBetween(rotate(conjugate(known), up), estimate.gravity[i]));
  }
  return result;
}

}  // namespace mirel
