#include <MirelAlgorithms/matching/FeaturePrediction.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <random>
#include <thread>
#include <vector>

using namespace MirelAlgorithms;

namespace {

constexpr std::uint64_t lastTime = UINT64_MAX;

TEST(FeaturePrediction, UpdatesThatSetOrErase) {
  FeaturePrediction track;
  track.update({1, 1}, 10);
  track.update({3, 1}, 20);
  for (const SVec2d& good : {SVec2d(1e6, 1e6), SVec2d(0, 5), SVec2d(5, 0), SVec2d(7, 8)}) {
    track.update(good, 20);
    EXPECT_EQ(track.predictPosition(20), good);
  }
  track.update({0.0, -0.0}, 20);
  EXPECT_FALSE(track.predictable(20));
}

using Entry = std::pair<std::uint64_t, SVec2d>;

SVec2d literalLine(const Entry& a, const Entry& b, double t) {
  const double t0 = static_cast<double>(a.first), t1 = static_cast<double>(b.first);
  return {a.second.x * (t - t1) / (t0 - t1) + b.second.x * (t - t0) / (t1 - t0),
          a.second.y * (t - t1) / (t0 - t1) + b.second.y * (t - t0) / (t1 - t0)};
}

// The polynomial as it is written, over the whole history that it needs.
SVec2d literalPosition(const std::vector<Entry>& history, std::uint64_t time) {
  for (const auto& [stamp, position] : history)
    if (stamp == time && history.size() > 1) return position;
  if (history.size() < 2) return {};
  if (history.size() == 2) return literalLine(history[0], history[1], static_cast<double>(time));
  std::size_t c = 0;
  while (c + 1 < history.size() && history[c].first <= time) ++c;
  c = std::max<std::size_t>(c, 2);
  const double t = static_cast<double>(time), t0 = static_cast<double>(history[c - 2].first),
               t1 = static_cast<double>(history[c - 1].first), t2 = static_cast<double>(history[c].first);
  const SVec2d p0 = history[c - 2].second, p1 = history[c - 1].second, p2 = history[c].second;
  return {p0.x * (t - t1) * (t - t2) / ((t0 - t2) * (t0 - t1)) + p1.x * (t - t0) * (t - t2) / ((t1 - t2) * (t1 - t0)) +
              p2.x * (t - t0) * (t - t1) / ((t2 - t1) * (t2 - t0)),
          p0.y * (t - t1) * (t - t2) / ((t0 - t2) * (t0 - t1)) + p1.y * (t - t0) * (t - t2) / ((t1 - t2) * (t1 - t0)) +
              p2.y * (t - t0) * (t - t1) / ((t2 - t1) * (t2 - t0))};
}

TEST(FeaturePrediction, EqualsTheLiteralPolynomial) {
  std::mt19937_64 random(81);
  std::uniform_real_distribution<double> pixel(0.0, 4000.0);
  for (const std::uint64_t first : {std::uint64_t{1}, std::uint64_t{1'700'000'000'000'000'000}})
    for (std::size_t count = 1; count < 12; ++count) {
      std::vector<Entry> history;
      FeaturePrediction track;
      std::uint64_t stamp = first;
      for (std::size_t i = 0; i < count; ++i) {
        history.emplace_back(stamp, SVec2d(pixel(random), pixel(random)));
        stamp += (first == 1 ? 1 : 10'000'000) * (1 + random() % 40);
      }
      for (std::size_t i = count; i-- > 0;) track.update(history[i].second, history[i].first);
      std::vector<std::uint64_t> times{0, first - 1, first + 1, lastTime - 1, lastTime};
      for (const auto& [time, position] : history) times.push_back(time);
      for (int i = 0; i < 300; ++i) times.push_back(first + random() % (2 * (stamp - first)));
      for (const std::uint64_t time : times) {
        SCOPED_TRACE(testing::Message() << count << " positions, at " << time);
        const auto covers = [&](std::uint64_t t) { return count > 1 && t >= first; };
        ASSERT_EQ(track.predictable(time), covers(time));
        ASSERT_EQ(track.predictableSpeed(time), covers(time - 1) && covers(time + 1));
        ASSERT_EQ(track.predictPosition(time), literalPosition(history, time));
        const SVec2d before = literalPosition(history, time - 1), after = literalPosition(history, time + 1);
        ASSERT_EQ(track.predictSpeed(time), SVec2d((after.x - before.x) * 0.5, (after.y - before.y) * 0.5));
      }
    }
}

TEST(FeaturePrediction, CopiesAreObjectsOfTheirOwn) {
  FeaturePrediction track;
  track.update({1, 1}, 10);
  track.update({3, 1}, 20);
  FeaturePrediction copy(track), assigned;
  assigned = copy;
  track.update({9, 9}, 20);
  for (const FeaturePrediction* each : {&copy, &assigned}) EXPECT_EQ(each->predictPosition(30), SVec2d(5, 1));
}

// Writers move the feature along the line y = 2 x + 5 in ever new steps, each history kept on the line while it grows
// and shrinks; whatever moment a reader sees, the parabola of points on a line is that line.
TEST(FeaturePrediction, ReadersAmongWritersSeeWholeHistories) {
  constexpr int writers = 2, readers = 4, rounds = 10000;
  FeaturePrediction track;
  const auto onLine = [](double x) { return SVec2d(x, 2.0 * x + 5.0); };
  for (std::uint64_t time = 1; time <= 2; ++time) track.update(onLine(static_cast<double>(100 + time)), time);
  std::atomic<int> offLine = 0, unpredictable = 0, waiting = writers + readers;
  std::vector<std::thread> threads;
  const auto start = [&](unsigned seed, const auto& round) {
    threads.emplace_back([&waiting, seed, round] {
      std::mt19937 random(seed);
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      for (int i = 0; i < rounds; ++i) round(random);
    });
  };
  for (unsigned writer = 0; writer < writers; ++writer)
    start(writer, [&](std::mt19937& random) {
      const std::uint64_t time = 1 + random() % 8;
      if (time > 2 && random() % 3 == 0)
        track.update({0, 0}, time);
      else
        track.update(onLine(random() % 1000), time);
    });
  for (unsigned reader = 0; reader < readers; ++reader)
    start(10 + reader, [&](std::mt19937& random) {
      const std::uint64_t time = 2 + random() % 10;
      const SVec2d position = track.predictPosition(time), speed = track.predictSpeed(time);
      offLine += std::abs(position.y - (2.0 * position.x + 5.0)) > 1e-6 * (1.0 + std::abs(position.x));
      offLine += std::abs(speed.y - 2.0 * speed.x) > 1e-6 * (1.0 + std::abs(speed.x));
      unpredictable += !track.predictable(time) + !track.predictableSpeed(time);
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(offLine, 0);
  EXPECT_EQ(unpredictable, 0);
}

}  // namespace
