/// Chance that is the same on every machine: the standard library's distributions are not.
#pragma once

#include <cstdint>

namespace mirel {

/// SplitMix64 (Steele, Lea and Flood, 2014).
class Noise {
 public:
  explicit Noise(std::uint64_t seed) : state_(seed) {}

  /// Evenly from `low` to `high`.
  double uniform(double low, double high) {
    constexpr double unit = 1.0 / (1ULL << 53);
    return low + (high - low) * static_cast<double>(next() >> 11) * unit;
  }

  /// Nearly normal about 0: a sum of twelve has variance 1.
  double normal(double deviation) {
    double sum = -6;
    for (int i = 0; i < 12; ++i) sum += uniform(0, 1);
    return deviation * sum;
  }

 private:
  std::uint64_t next() {
    std::uint64_t z = state_ += 0x9e3779b97f4a7c15;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return z ^ (z >> 31);
  }

  std::uint64_t state_;
};

}  // namespace mirel
