// A device rests, is turned by 90 degrees about its x axis and slides a little: attitude and way from simulated
// samples.
#include <MirelAlgorithms/MirelAlgorithms.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <opencv2/core.hpp>

using namespace MirelAlgorithms;

namespace {

constexpr int kRate = 100;  // samples per second
constexpr float kStep = 1.0f / kRate, kGravity = 9.81f, kQuarterTurn = 1.5707964f;

// Rests for a second, turns for a second, rests. An accelerometer at rest measures gravity upward.
void turn(MayhonyAHRS& attitude) {
  float angle = 0.0f;
  for (int i = 0; i < 3 * kRate; ++i) {
    const bool turning = i >= kRate && i < 2 * kRate;
    const cv::Vec3f gyro(turning ? kQuarterTurn : 0.0f, 0.0f, 0.0f);                      // rad/s
    const cv::Vec3f accel(0.0f, kGravity * std::sin(angle), kGravity * std::cos(angle));  // m/s2
    const cv::Vec3f motion = i == 0 ? cv::Vec3f(1.0f, 0.0f, 0.0f) : gyro;  // the first sample counts: it aligns
    attitude.update(gyro, accel, motion, kStep);
    angle += gyro[0] * kStep;
  }
}

// Speeds up for a second; gravity is taken off already.
void slide(AccelIntegrator& way) {
  for (int i = 0; i < kRate; ++i) way.update({1.0f, 0.0f, 0.0f}, kStep);  // m/s2
}

// What a low-pass of 2 Hz leaves of a vibration of 20 Hz, after the 500 samples that it withholds.
float vibrationLeft() {
  Butterworth lowpass(2.0f, kRate, Butterworth::Lowpass, 1.4142f);
  float largest = 0.0f;
  for (int i = 0; i < 10 * kRate; ++i) {
    lowpass.update(std::sin(2.0f * 3.1415927f * 20.0f * static_cast<float>(i) * kStep));
    largest = std::max(largest, std::abs(lowpass.value()));
  }
  return largest;
}

}  // namespace

int main() {
  MayhonyAHRS attitude;
  turn(attitude);
  const cv::Vec3f up = attitude.gravity();
  const cv::Vec4f q = attitude.value();
  std::printf("up is (%.2f, %.2f, %.2f) to the sensor, attitude (%.3f, %.3f, %.3f; %.3f)\n", up[0], up[1], up[2], q[0],
              q[1], q[2], q[3]);

  AccelIntegrator way;
  slide(way);
  std::printf("slid %.3f m, speed now %.3f m/s\n", way.position()[0], way.speed()[0]);
  std::printf("vibration of 20 Hz: %.1f %% left\n", 100.0f * vibrationLeft());

  std::vector<double> series(50), smooth;
  for (std::size_t i = 0; i < series.size(); ++i) series[i] = 0.1 * static_cast<double>(i) + (i % 2 ? 0.5 : -0.5);
  if (!sgCubicSmoother(series, smooth, 11)) return 1;  // a window it does not have, or too short a series
  std::printf("zigzag of 0.5 about a line, smoothed: off by %.2f\n", std::abs(smooth[25] - 2.5));
}
