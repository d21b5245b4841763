/// Speed and position from acceleration.
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/filters/RoundedProduct.h>

#include <opencv2/core/matx.hpp>

namespace MirelAlgorithms {

/// Integrates acceleration twice by the semi-implicit Euler method, in single precision: speed += a dt, then
/// position += speed dt. Acceleration is taken as it comes: no filter, no bias, no gravity; frame and units are the
/// caller's, and errors grow with the square of time.
///
/// A number that is not finite, also as `dt`, stays in speed and position until `reset`. One thread at a time. The
/// bits do not depend on the flags that a caller compiles with, except -ffast-math and its like.
class MIREL_API AccelIntegrator {
 public:
  /// At rest in the origin.
  ///
  /// @param step  kept and copied, without any effect
  explicit(false) AccelIntegrator(float step = 0.01f);
  AccelIntegrator(const AccelIntegrator& other) = default;
  AccelIntegrator& operator=(const AccelIntegrator& other) = default;
  virtual ~AccelIntegrator();

  /// One step. With speed in v and time in s, `acceleration` is in v / s.
  ///
  /// @param acceleration  of this sample, kept
  /// @param dt            time since the last sample; negative steps go back, 0 only keeps the acceleration
  void update(const cv::Vec3f& acceleration, float dt) {
    acceleration_ = acceleration;
    for (int axis = 0; axis < 3; ++axis) {
      speed_[axis] = detail::roundedProduct(dt, acceleration_[axis]) + speed_[axis];
      position_[axis] = detail::roundedProduct(dt, speed_[axis]) + position_[axis];
    }
  }

  cv::Vec3f acceleration() const { return acceleration_; }  ///< of the last step
  cv::Vec3f speed() const { return speed_; }                ///< after the last step
  cv::Vec3f position() const { return position_; }          ///< after the last step

  /// All three back to zero.
  void reset();

 private:
  [[maybe_unused]] float step_;
  cv::Vec3f acceleration_, speed_, position_;
};

}  // namespace MirelAlgorithms
