#include <MirelAlgorithms/frame/Timestamp.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

using namespace MirelAlgorithms;

namespace {

// The only caller of timestamp0 in this program.
TEST(Timestamp, OriginIsLatchedByTheFirstCallersAndTheSameForAll) {
  static const double beforeTheFirstCall = timestamp();
  std::atomic<bool> go = false;
  std::vector<double> origins(16);
  std::vector<std::thread> threads;
  threads.reserve(origins.size());
  for (double& origin : origins)
    threads.emplace_back([&go, &origin] {
      while (!go) std::this_thread::yield();
      origin = timestamp0();
    });
  go = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(origins, std::vector<double>(16, timestamp0()));
  EXPECT_GE(timestamp0(), beforeTheFirstCall);
  EXPECT_LE(timestamp0(), timestamp());
  EXPECT_LT(beforeTheFirstCall, timestamp()) << "the clock stands still";
}

TEST(Timestamp, MillisecondsMoveInWholeSecondsOfTheSameClock) {
  const double before = timestamp();
  const std::uint64_t milliseconds = timestampMS();
  const double after = timestamp();
  EXPECT_EQ(milliseconds % 1000, 0u);
  EXPECT_GE(static_cast<double>(milliseconds), std::floor(before) * 1000.0);
  EXPECT_LE(static_cast<double>(milliseconds), after * 1000.0);
}

}  // namespace
