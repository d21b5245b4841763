/// A device that rests, is turned about one axis after the other, and rests again; its attitude is known exactly.
#include "demo/DemoData.h"
#include "demo/Noise.h"
#include "inertial/Rotation.h"

#include <fmt/format.h>

#include <cmath>

namespace mirel {

namespace {

constexpr double gravity = 9.80665, rate = 100;  // m/s2, Hz
constexpr double restSeconds = 2, turnSeconds = 1.5;
constexpr int turns = 8;

cv::Vec3d scatter(Noise& noise, double deviation) {
  const double x = noise.normal(deviation), y = noise.normal(deviation);
  return {x, y, noise.normal(deviation)};
}

cv::Vec4d about(const cv::Vec3d& axis, double angle) {
  const cv::Vec3d v = std::sin(angle / 2) * axis;
  return {v[0], v[1], v[2], std::cos(angle / 2)};
}

/// About one axis of the sensor, while the hand moves to and fro.
struct Turn {
  cv::Vec3d axis, move;
  double angle;

  explicit Turn(Noise& noise)
      : axis(cv::normalize(scatter(noise, 1))), move(scatter(noise, 0.08)), angle(noise.uniform(0.5, 1.8)) {}

  /// phase - sin(2 pi phase) / 2 pi: starts and ends slowly.
  double angleAt(double time) const {
    const double w = 2 * CV_PI / turnSeconds;
    return angle * (time / turnSeconds - std::sin(w * time) / (2 * CV_PI));
  }
  double speedAt(double time) const { return angle / turnSeconds * (1 - std::cos(2 * CV_PI * time / turnSeconds)); }

  /// The way is move (1 - cos)^2 / 4; this is its second derivative.
  cv::Vec3d accelerationAt(double time) const {
    const double w = 2 * CV_PI / turnSeconds;
    return move * (w * w * (std::cos(w * time) - std::cos(2 * w * time)) / 2);
  }
};

/// Writes down what a cheap sensor measures, with noise and a constant bias, and what is true.
class Recorder {
 public:
  explicit Recorder(Noise& noise) : noise_(noise), gyroBias_(scatter(noise, 0.006)), accelBias_(scatter(noise, 0.03)) {}

  /// @param turned        radians per second, axes of the sensor
  /// @param acceleration  metres per square second, axes of the world
  void sample(const cv::Vec4d& attitude, const cv::Vec3d& turned, const cv::Vec3d& acceleration) {
    const cv::Vec3d force = rotate(conjugate(attitude), acceleration + cv::Vec3d(0, 0, gravity));
    const cv::Vec3d gyro = turned + gyroBias_ + scatter(noise_, 0.004);
    const cv::Vec3d accel = force + accelBias_ + scatter(noise_, 0.03);
    const double time = samples_++ / rate;
    recording += fmt::format("{:.2f},{:.6f},{:.6f},{:.6f},{:.6f},{:.6f},{:.6f}\n", time, gyro[0], gyro[1], gyro[2],
                             accel[0], accel[1], accel[2]);
    truth +=
        fmt::format("{:.2f},{:.9f},{:.9f},{:.9f},{:.9f}\n", time, attitude[0], attitude[1], attitude[2], attitude[3]);
  }

  std::string recording = "t_s,gyro_x_rad_s,gyro_y_rad_s,gyro_z_rad_s,accel_x_m_s2,accel_y_m_s2,accel_z_m_s2\n";
  std::string truth = "t_s,q_x,q_y,q_z,q_w\n";

 private:
  Noise& noise_;
  cv::Vec3d gyroBias_, accelBias_;
  int samples_ = 0;
};

}  // namespace

void writeInertialRecording(OutputFolder& folder) {
  Noise noise(5);
  Recorder recorder(noise);
  cv::Vec4d attitude = about({0.6, 0.8, 0}, 0.4);
  for (int i = 0; i <= turns; ++i) {
    for (int k = 0; k < restSeconds * rate; ++k) recorder.sample(attitude, {}, {});
    if (i == turns) break;
    const Turn turn(noise);
    for (int k = 0; k < turnSeconds * rate; ++k) {
      const double time = k / rate;
      recorder.sample(product(attitude, about(turn.axis, turn.angleAt(time))), turn.axis * turn.speedAt(time),
                      turn.accelerationAt(time));
    }
    attitude = product(attitude, about(turn.axis, turn.angle));
  }
  folder.write("recording.csv", recorder.recording);
  folder.write("truth.csv", recorder.truth);
}

}  // namespace mirel
