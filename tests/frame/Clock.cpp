#include <MirelAlgorithms/frame/internal/Clock.h>
#include <gtest/gtest.h>

#include <cstdint>

using namespace MirelAlgorithms;

namespace {

Counter counterValue;
std::uint64_t tickValue;

constexpr ClockSource withCounter{[](Counter& counter) {
                                    counter = counterValue;
                                    return true;
                                  },
                                  [] { return tickValue; }};
constexpr ClockSource withoutCounter{[](Counter&) { return false; }, [] { return tickValue; }};

TEST(Clock, CounterGivesFractionsOfSecondsButWholeSecondsInMilliseconds) {
  struct Row {
    Counter counter;
    double seconds;
    std::uint64_t milliseconds;
  };
  tickValue = 77;
  for (const Row& row : {Row{{0, 10'000'000}, 0.0, 0}, Row{{9'999'999, 10'000'000}, 0.9999999, 0},
                         Row{{75'000'000, 10'000'000}, 7.5, 7000}, Row{{1'234'567'890, 1'000'000}, 1234.56789, 1234000},
                         Row{{INT64_MAX, 1'000'000'000}, 9223372036.854775807, 9223372036000}}) {
    counterValue = row.counter;
    EXPECT_EQ(seconds(withCounter), row.seconds);
    EXPECT_EQ(milliseconds(withCounter), row.milliseconds);
  }
}

TEST(Clock, WithoutCounterTicksAreMilliseconds) {
  for (const std::uint64_t ticks : {std::uint64_t{0}, std::uint64_t{1234567}, std::uint64_t{1} << 63, UINT64_MAX}) {
    tickValue = ticks;
    EXPECT_EQ(seconds(withoutCounter), static_cast<double>(ticks) * 0.001);
    EXPECT_EQ(milliseconds(withoutCounter), ticks);
  }
}

}  // namespace
