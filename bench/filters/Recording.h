/// Made-up recordings of a hand-held device.
#pragma once

#include <benchmark/benchmark.h>

#include <cmath>
#include <opencv2/core/matx.hpp>
#include <random>
#include <vector>

namespace bench {

constexpr int recordingLength = 100'000;
constexpr float recordingStep = 0.01f;  ///< seconds

/// A slow wave with noise.
template <class Number>
std::vector<Number> recordedSeries(std::size_t size) {
  std::mt19937 random(1);
  std::normal_distribution<double> noise(0.0, 0.1);
  std::vector<Number> series(size);
  for (std::size_t i = 0; i < size; ++i)
    series[i] = static_cast<Number>(std::sin(0.01 * static_cast<double>(i)) + noise(random));
  return series;
}

/// Turning to and fro; rates in rad/s, acceleration in units of gravity.
struct Motion {
  std::vector<cv::Vec3f> gyro, accel;
};

inline Motion recordedMotion() {
  std::mt19937 random(2);
  std::normal_distribution<float> noise(0.0f, 0.02f);
  Motion motion;
  for (int i = 0; i < recordingLength; ++i) {
    const float turn = std::sin(0.003f * static_cast<float>(i));
    motion.gyro.emplace_back(turn + noise(random), 0.5f * turn + noise(random), 0.3f + noise(random));
    motion.accel.emplace_back(0.4f * turn + noise(random), noise(random), std::sqrt(1.0f - 0.16f * turn * turn));
  }
  return motion;
}

/// Shows the time of one sample, in seconds.
inline void countSamples(benchmark::State& state, std::size_t samples) {
  using benchmark::Counter;
  state.counters["per_sample_s"] =
      Counter(static_cast<double>(samples), Counter::kIsIterationInvariantRate | Counter::kInvert);
}

}  // namespace bench
