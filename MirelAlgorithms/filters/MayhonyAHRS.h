/// Attitude of a hand-held device from gyroscope and accelerometer.
///
///     MayhonyAHRS attitude;
///     for (const Sample& s : recording) attitude.update(s.gyro, s.accel, s.gyro, s.dt);
///     const cv::Vec3f up = attitude.gravity();  // as seen by the sensor
#pragma once

#include <MirelAlgorithms/Export.h>

#include <opencv2/core/matx.hpp>

namespace MirelAlgorithms {

/// Attitude as a unit quaternion, in single precision: the gyroscope is integrated and each sample takes one step of
/// fixed gain 0.1 down the gradient of the error of gravity (Madgwick, Harrison, Vaidyanathan: "Estimation of IMU and
/// MARG orientation using a gradient descent algorithm", ICORR 2011).
///
/// Quaternions are (x, y, z, w) and turn directions of the sensor into directions of the world, whose z axis an
/// accelerometer at rest points along. Heading starts at 0 and is only integrated, so it drifts.
///
/// Steps during which the device stands still change nothing. The first step that is taken with a usable accelerometer
/// sample aligns the attitude with it by the shortest rotation.
///
/// Inputs are not checked. A gyroscope rate, time step or accelerometer sample that is not finite can leave the
/// quaternion not a number until `reset`; motion that is not a number counts as movement. One thread at a time; const
/// functions of one object on any number of threads.
class MIREL_API MayhonyAHRS {
 public:
  /// Attitude (0, 0, 0, 1), to be aligned by the first usable sample.
  ///
  /// @param kp, ki               kept and copied, without any effect
  /// @param standstillThreshold  magnitude of the motion below which the device stands still
  explicit(false) MayhonyAHRS(float kp = 0.6f, float ki = 0.15f, float standstillThreshold = 0.04f);
  MayhonyAHRS(const MayhonyAHRS& other) = default;
  MayhonyAHRS& operator=(const MayhonyAHRS& other) = default;
  virtual ~MayhonyAHRS();

  /// One step.
  ///
  /// @param gyro    rates about the sensor's axes, radians per unit of `dt`
  /// @param accel   any unit, only the direction counts; zero: the gyroscope alone
  /// @param motion  its magnitude decides about standstill, in the unit of the threshold; `gyro` again is usual
  /// @param dt      time since the last step
  void update(const cv::Vec3f& gyro, const cv::Vec3f& accel, const cv::Vec3f& motion, float dt);

  /// The attitude (x, y, z, w).
  cv::Vec4f value() const { return quaternion_; }

  /// The world's z axis in the sensor's frame: where an accelerometer at rest would point. Unit length.
  cv::Vec3f gravity() const;

  /// Angles (a, b, c) of the attitude as Rx(a) Ry(b) Rz(c), radians, a in [0, pi].
  cv::Vec3f angles() const;

  /// Whether `motion` is shorter than the threshold.
  bool standstill(const cv::Vec3f& motion) const;

  /// Attitude (0, 0, 0, 1), to be aligned anew.
  void reset();

 private:
  void align(const cv::Vec3f& accel);

  float standstillThreshold_;
  [[maybe_unused]] float twoKp_, twoKi_;
  cv::Vec3f reference_;   // gravity in the world
  cv::Vec4f quaternion_;  // x, y, z, w
  cv::Vec3f integralError_;
  bool firstUpdate_;
};

}  // namespace MirelAlgorithms
