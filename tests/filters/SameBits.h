/// Streams of hostile numbers, and equality to the bit.
#pragma once

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

/// Equal to the bit; numbers that are no number equal each other.
template <class Number>
bool sameBits(Number a, Number b) {
  return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof(Number)) == 0;
}

/// Random numbers, every tenth or so taken from the ends of the range and beyond when `hostile`.
template <class Number>
class Stream {
 public:
  Stream(unsigned seed, bool hostile) : random_(seed), hostile_(hostile) {}

  Number operator()() {
    using Limits = std::numeric_limits<Number>;
    constexpr Number odd[] = {
        0,           Number(-0.0),       Limits::denorm_min(), Limits::min(),      Limits::epsilon(),
        Number(1e9), -Limits::max(),     Limits::max(),        Limits::infinity(), -Limits::infinity(),
        Number(-1),  Limits::quiet_NaN()};
    const Number usual = normal_(random_);
    return hostile_ && random_() % 10 == 0 ? odd[random_() % std::size(odd)] : usual;
  }

  std::vector<Number> series(std::size_t size) {
    std::vector<Number> numbers(size);
    for (Number& number : numbers) number = (*this)();
    return numbers;
  }

 private:
  std::mt19937 random_;
  std::normal_distribution<Number> normal_;
  bool hostile_;
};
