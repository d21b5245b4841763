#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/matching/FeatureMatching.h>
#include <gtest/gtest.h>
#include <matching/LiteralMatching.h>
#include <support/LogCapture.h>
#include <tbb/task_arena.h>
#include <tbb/task_group.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <stdexcept>
#include <thread>

using namespace MirelAlgorithms;

namespace {

using KeyPoints = std::vector<cv::KeyPoint>;
using Random = std::mt19937;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

struct Input {
  KeyPoints keyPoints1, keyPoints2;
  cv::Mat descriptors1, descriptors2;
  FBMValidationParams params{Exhaustive};
  std::vector<FBPrediction> predictions;
};

struct Output {
  bool enough = false;
  std::vector<FBMatch> matches;
  std::vector<FBPrediction> predictions;
};

template <class Match>
Output run(const Input& in, const Match& match) {
  Output out;
  out.predictions = in.predictions;
  out.enough =
      match(in.keyPoints1, in.descriptors1, in.keyPoints2, in.descriptors2, in.params, out.matches, out.predictions);
  return out;
}

Output run(const Input& in) { return run(in, matchFeatures); }

auto bitsOf(float value) {
  std::uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

void expectSame(const Output& actual, const Output& expected) {
  EXPECT_EQ(actual.enough, expected.enough);
  ASSERT_EQ(actual.matches.size(), expected.matches.size());
  for (std::size_t n = 0; n < expected.matches.size(); ++n) {
    const FBMatch &a = actual.matches[n], &e = expected.matches[n];
    EXPECT_EQ(std::tuple(a.queryIdx, a.trainIdx, a.distance, bitsOf(a.predictedX), bitsOf(a.predictedY)),
              std::tuple(e.queryIdx, e.trainIdx, e.distance, bitsOf(e.predictedX), bitsOf(e.predictedY)))
        << "match " << n;
  }
  ASSERT_EQ(actual.predictions.size(), expected.predictions.size());
  for (std::size_t i = 0; i < expected.predictions.size(); ++i) {
    const FBPrediction &a = actual.predictions[i], &e = expected.predictions[i];
    EXPECT_EQ(std::tuple(bitsOf(a.x), bitsOf(a.y), bitsOf(a.searchRadiusSq), a.state),
              std::tuple(bitsOf(e.x), bitsOf(e.y), bitsOf(e.searchRadiusSq), e.state))
        << "prediction " << i;
  }
}

template <class T>
T oneOf(Random& random, std::initializer_list<T> values) {
  return values.begin()[random() % values.size()];
}

float uniform(Random& random, float least, float most) {
  return std::uniform_real_distribution<float>(least, most)(random);
}

// Descriptors as a view into a wider matrix: rows at any address, not continuous.
cv::Mat randomDescriptors(Random& random, std::size_t rows, int width) {
  const int left = static_cast<int>(random() % 20), right = static_cast<int>(random() % 3);
  cv::Mat all(static_cast<int>(rows), left + width + right, CV_8UC1);
  for (int r = 0; r < all.rows; ++r)
    for (int c = 0; c < all.cols; ++c) all.at<unsigned char>(r, c) = static_cast<unsigned char>(random());
  return all.colRange(left, left + width);
}

// The second frame shows the first frame's features in another order, moved and with a few bits changed, and others.
// Few bits changed means many equal distances.
Input randomInput(Random& random) {
  Input in;
  const std::size_t size1 = oneOf<std::size_t>(random, {1, 2, 3, 8, 15, 16, 17, 40, 130, 300});
  const std::size_t size2 = oneOf<std::size_t>(random, {1, 2, 3, 8, 15, 16, 17, 40, 130, 300});
  const int width = oneOf<int>(random, {16, 32, 64, static_cast<int>(1 + random() % 70), 128, 256, 257});
  in.descriptors1 = randomDescriptors(random, size1, width);
  in.descriptors2 = randomDescriptors(random, size2, width);
  in.keyPoints1.resize(size1);
  in.keyPoints2.resize(size2);
  const float side = oneOf(random, {30.0f, 300.0f, 1e-3f}), noise = oneOf(random, {0.0f, 0.5f});
  for (cv::KeyPoint& k : in.keyPoints1) k.pt = {uniform(random, 0, side), uniform(random, 0, side)};
  for (std::size_t j = 0; j < size2; ++j) {
    cv::Point2f& p = in.keyPoints2[j].pt;
    p = {uniform(random, 0, side), uniform(random, 0, side)};
    if (random() % 5 == 0) continue;
    const std::size_t i = (j * 7 + 3) % size1;
    p = in.keyPoints1[i].pt + cv::Point2f(3 + uniform(random, 0, noise), -2 + uniform(random, 0, noise));
    cv::Mat row = in.descriptors2.row(static_cast<int>(j));
    in.descriptors1.row(static_cast<int>(i)).copyTo(row);
    for (unsigned flips = random() % 4; flips > 0; --flips)
      row.at<unsigned char>(0, static_cast<int>(random() % static_cast<unsigned>(width))) ^= 1 << random() % 8;
  }

  in.params = FBMValidationParams(oneOf(random, {Narrow, Wide, Exhaustive}));
  in.params.refine = random() % 2;
  in.params.searchRadiusSq = oneOf(random, {in.params.searchRadiusSq, 25.0f, 400.0f});
  if (random() % 2) in.params.maxDistance = oneOf<std::uint16_t>(random, {0, 8, 64, 300, 600, 65534, 65535});
  if (random() % 2)
    in.params.ratio =
        oneOf(random, {0.0f, -1.0f, nan, 0.5f, 0.999f, 1.0f, 3.0f, infinity, 1e-4f, 64 / 65535.0f, 1e-9f});
  in.params.minMatches = oneOf(random, {in.params.minMatches, -1, 0, 1, 5});
  return in;
}

// Coordinates and circles that arithmetic does not like.
void makeHostile(Random& random, Input& in) {
  const auto coordinate = [&] {
    return oneOf(random, {nan, infinity, -infinity, 1e19f, -1e20f, FLT_MAX, -FLT_MAX, 0.0f, -0.0f, 1e-45f, 5.0f});
  };
  const unsigned rarity = oneOf(random, {12u, 100u});
  for (KeyPoints* keyPoints : {&in.keyPoints1, &in.keyPoints2})
    for (cv::KeyPoint& k : *keyPoints)
      if (random() % rarity == 0) (random() % 2 ? k.pt.x : k.pt.y) = coordinate();
  for (FBPrediction& p : in.predictions) {
    if (random() % rarity == 0) (random() % 2 ? p.x : p.y) = coordinate();
    if (random() % rarity == 0)
      p.searchRadiusSq = oneOf(random, {nan, infinity, -infinity, -1.0f, 0.0f, FLT_MAX, 1e-45f});
  }
}

void addPredictions(Random& random, Input& in) {
  const std::size_t size = in.keyPoints1.size();
  in.predictions.resize(oneOf<std::size_t>(random, {0, size, size, size + 1}));
  for (std::size_t i = 0; i < in.predictions.size(); ++i) {
    const cv::Point2f at = in.keyPoints1[i % size].pt;
    in.predictions[i] = {at.x + uniform(random, -5, 5), at.y + uniform(random, -5, 5), uniform(random, 0, 200),
                         oneOf<std::int32_t>(random, {0, 1, 2, 3, 4, 5, -7})};
  }
}

class MatchFeatures : public testing::Test {
 protected:
  ~MatchFeatures() override { limitCpuVariant(CpuVariant::avx512); }
};

TEST_F(MatchFeatures, SameBitsAsTheLiteralLoops) {
  Random random(20240607);
  std::size_t matches = 0, refined = 0;
  for (int round = 0; round < 1500; ++round) {
    Input in = randomInput(random);
    addPredictions(random, in);
    if (round % 3 == 0) makeHostile(random, in);
    const Output expected = run(in, literal::matchFeatures);
    matches += expected.matches.size();
    refined += std::count_if(expected.predictions.begin(), expected.predictions.end(),
                             [](const FBPrediction& p) { return p.state == 3; });
    const int threads = oneOf(random, {1, 2, 3, 8});
    for (const CpuVariant variant : {CpuVariant::baseline, CpuVariant::avx2, CpuVariant::avx512}) {
      SCOPED_TRACE(testing::Message() << "round " << round << ", " << threads << " threads, " << name(variant));
      limitCpuVariant(variant);
      tbb::task_arena(threads).execute([&] { expectSame(run(in), expected); });
    }
    if (HasFatalFailure() || HasNonfatalFailure()) return;
  }
  EXPECT_GT(matches, 10000u);  // the inputs exercise what they are meant to
  EXPECT_GT(refined, 5000u);
}

// More features than a block of boxes covers, spread unevenly, with the points of a line and of one spot among them.
TEST_F(MatchFeatures, LargeFrames) {
  Random random(5);
  Input in;
  in.params = FBMValidationParams(Narrow);
  for (KeyPoints* keyPoints : {&in.keyPoints1, &in.keyPoints2}) {
    keyPoints->resize(1500);
    for (cv::KeyPoint& k : *keyPoints) {
      k.pt = {uniform(random, 0, 640), uniform(random, 0, 480)};
      if (random() % 4 == 0) k.pt = {k.pt.x, 100};
      if (random() % 8 == 0) k.pt = {321, 123};
    }
  }
  in.descriptors1 = randomDescriptors(random, 1500, 32);
  in.descriptors2 = in.descriptors1.clone();
  in.params.maxDistance = 65535;
  for (const float radius : {0.0f, 1.0f, 20.0f, 120.0f, 400.0f, 1000.0f}) {
    in.params.searchRadiusSq = radius * radius;
    const Output expected = run(in, literal::matchFeatures);
    for (const CpuVariant variant : {CpuVariant::baseline, CpuVariant::avx2, CpuVariant::avx512}) {
      limitCpuVariant(variant);
      expectSame(run(in), expected);
    }
  }
}

// A distance of 65600 bits does not fit sixteen: its low bits count.
TEST_F(MatchFeatures, DistancesWrap) {
  Input in;
  in.keyPoints1.resize(2);
  in.keyPoints2.resize(2);
  in.descriptors1 = cv::Mat::zeros(2, 8200, CV_8UC1);
  in.descriptors2 = cv::Mat(2, 8200, CV_8UC1, cv::Scalar(255));
  in.descriptors2.row(1).colRange(0, 4000) = 0;
  in.descriptors1.row(1).colRange(0, 5000) = 255;
  for (const CpuVariant variant : {CpuVariant::baseline, CpuVariant::avx2, CpuVariant::avx512}) {
    limitCpuVariant(variant);
    const Output out = run(in);
    expectSame(out, run(in, literal::matchFeatures));
    ASSERT_EQ(out.matches.size(), 1u);
    EXPECT_EQ(out.matches[0].distance, 65600 - 65536);
  }
}

// One key point per row of `bits`, all in one spot; descriptor of 1024 bits with so many leading ones.
cv::Mat descriptorsWithOnes(std::initializer_list<int> bits) {
  cv::Mat rows = cv::Mat::zeros(static_cast<int>(bits.size()), 128, CV_8UC1);
  for (int r = 0; r < rows.rows; ++r)
    for (int bit = 0; bit < bits.begin()[r]; ++bit) rows.at<unsigned char>(r, bit / 8) |= 1 << bit % 8;
  return rows;
}

Input inputWithOnes(std::initializer_list<int> bits1, std::initializer_list<int> bits2) {
  Input in;
  in.descriptors1 = descriptorsWithOnes(bits1);
  in.descriptors2 = descriptorsWithOnes(bits2);
  in.keyPoints1.resize(bits1.size());
  in.keyPoints2.resize(bits2.size());
  return in;
}

TEST_F(MatchFeatures, RatioAndBackwardTest) {
  struct Row {
    std::initializer_list<int> bits1, bits2;
    std::vector<std::pair<int, int>> pairs;
  };
  const Row rows[] = {
      {{0}, {100, 124}, {}},                     // 100 / 124 is above 0.8
      {{0}, {100, 125}, {{0, 0}}},               // exactly 0.8
      {{0}, {0, 0}, {{0, 0}}},                   // 0 / 0 passes, and the lower index is nearer
      {{0, 220}, {100}, {}},                     // 120 <= 125 and 100 <= 150: each blocks the other
      {{0, 225}, {100}, {}},                     // 125 <= 125
      {{0, 226}, {100}, {{0, 0}}},               // 126 > 125, yet 100 <= 157
      {{0, 500}, {100, 500}, {{0, 0}, {1, 1}}},  // far apart
      {{7, 7}, {7, 900}, {}},                    // two equal descriptors block each other
  };
  for (const Row& row : rows) {
    const Output out = run(inputWithOnes(row.bits1, row.bits2));
    std::vector<std::pair<int, int>> pairs;
    for (const FBMatch& match : out.matches) pairs.emplace_back(match.queryIdx, match.trainIdx);
    EXPECT_EQ(pairs, row.pairs) << "row " << &row - rows;
  }
}

TEST_F(MatchFeatures, BeyondMaxDistanceIsNoSecondButBlocks) {
  Input second = inputWithOnes({0}, {100, 110}), rival = inputWithOnes({0, 210}, {100});
  second.params.maxDistance = rival.params.maxDistance = 105;
  EXPECT_EQ(run(second).matches.size(), 1u);
  EXPECT_EQ(run(rival).matches.size(), 0u);
}

TEST_F(MatchFeatures, WhatIsNotMeasuredDoesNotBlock) {
  Input in = inputWithOnes({0, 0}, {1});
  in.predictions = {{0, 0, 1, 1}, {9, 9, 1, 1}};
  in.params.ratio = 1 / 65535.0f;  // feature 1 would have to be farther than 65535
  EXPECT_EQ(run(in).matches.size(), 1u);
}

TEST_F(MatchFeatures, PointOnTheCircleIsACandidate) {
  Input in = inputWithOnes({0}, {0});
  in.keyPoints2[0].pt = {3, 4};
  for (const float radiusSq : {25.0f, std::nextafter(25.0f, 0.0f)}) {
    in.predictions = {{0, 0, radiusSq, 2}};
    const Output out = run(in);
    ASSERT_EQ(out.matches.size(), radiusSq == 25.0f ? 1u : 0u);
    EXPECT_EQ(out.predictions[0].state, radiusSq == 25.0f ? 4 : 2);
  }
}

TEST_F(MatchFeatures, EnoughMatches) {
  struct Row {
    std::size_t size1, size2;
    int minMatches;
    bool enough;  // without any match
  };
  for (const Row& row : {Row{1, 1, 1, false}, Row{1, 9, 0, false}, Row{2, 2, 30, true}, Row{2, 9, 30, true},
                         Row{9, 2, 1, true}, Row{3, 3, 1, false}, Row{3, 3, 0, true}, Row{9, 9, -1, false}}) {
    Input in;
    in.keyPoints1.resize(row.size1);
    in.keyPoints2.resize(row.size2, cv::KeyPoint(99, 99, 1));
    in.descriptors1 = cv::Mat::zeros(static_cast<int>(row.size1), 32, CV_8UC1);
    in.descriptors2 = cv::Mat::zeros(static_cast<int>(row.size2), 32, CV_8UC1);
    in.params.searchRadiusSq = 1;
    in.params.minMatches = row.minMatches;
    const Output out = run(in);
    EXPECT_TRUE(out.matches.empty());
    EXPECT_EQ(out.enough, row.enough) << row.size1 << ", " << row.size2 << ", " << row.minMatches;
  }
}

TEST_F(MatchFeatures, RefusesWhatDoesNotFit) {
  const Input good = inputWithOnes({0, 500}, {0, 500});
  const auto with = [&](auto change) {
    Input in = good;
    in.predictions.resize(7);
    change(in);
    return in;
  };
  const Input rejected[] = {
      with([](Input& in) { in.keyPoints1.clear(); }),
      with([](Input& in) { in.keyPoints2.clear(); }),
      with([](Input& in) { in.keyPoints1.clear(), in.descriptors1.release(); }),
      with([](Input& in) { in.descriptors1 = in.descriptors1.row(0); }),
      with([](Input& in) { in.descriptors2.release(); }),
      with([](Input& in) { in.descriptors1 = in.descriptors1.colRange(0, 127); }),
      with([](Input& in) { in.descriptors2 = cv::Mat(2, 16, CV_32FC1); }),
  };
  const Input refused[] = {
      with([](Input& in) { in.descriptors1 = in.descriptors2 = cv::Mat(2, 0, CV_8UC1); }),
      with([](Input& in) { in.descriptors1 = cv::Mat(2, 128, CV_8SC1); }),
      with([](Input& in) { in.descriptors2 = cv::Mat(2, 128, CV_8UC3); }),
  };
  const auto untouched = [](const std::vector<FBMatch>& matches, const std::vector<FBPrediction>& predictions) {
    return matches.size() == 3 && predictions.size() == 7;
  };
  std::vector<FBMatch> matches(3);
  for (const Input& in : rejected) {
    std::vector<FBPrediction> predictions = in.predictions;
    EXPECT_FALSE(
        matchFeatures(in.keyPoints1, in.descriptors1, in.keyPoints2, in.descriptors2, in.params, matches, predictions))
        << "rejected " << &in - rejected;
    EXPECT_TRUE(untouched(matches, predictions));
  }
  for (const Input& in : refused) {
    std::vector<FBPrediction> predictions = in.predictions;
    EXPECT_THROW(
        matchFeatures(in.keyPoints1, in.descriptors1, in.keyPoints2, in.descriptors2, in.params, matches, predictions),
        std::invalid_argument)
        << "refused " << &in - refused;
    EXPECT_TRUE(untouched(matches, predictions));
  }
}

TEST_F(MatchFeatures, CallsInsideTasksOfTheCaller) {
  Random random(3);
  Input in;
  do in = randomInput(random);
  while (in.keyPoints1.size() < 100 || in.keyPoints2.size() < 100);
  const Output expected = run(in, literal::matchFeatures);
  std::vector<Output> outs(32);
  tbb::task_group tasks;
  for (Output& out : outs) tasks.run([&in, &out] { out = run(in); });
  tasks.wait();
  for (const Output& out : outs) expectSame(out, expected);
}

TEST_F(MatchFeatures, QualityLine) {
  Input in = inputWithOnes({0, 500, 1000}, {1000, 0, 500});
  in.keyPoints1[0].pt = {3, 4};   // goes to (0, 0)
  in.keyPoints1[1].pt = {0, 10};  // likewise
  in.keyPoints1[2].pt = {0, 0};
  in.predictions = {{0, 1, FLT_MAX, 1}, {0, 1, FLT_MAX, 2}, {0, 1, FLT_MAX, 3}};
  for (const auto& [level, lines] : {std::pair(1000, 0u), std::pair(1499, 0u), std::pair(1500, 1u)}) {
    LogCapture log(level);
    run(in);
    const auto records = log.of("MirelAlgorithms::matchQualityLog");
    ASSERT_EQ(records.size(), lines);
    if (lines == 0) continue;
    EXPECT_EQ(records[0].level, 1000);
    EXPECT_EQ(records[0].message,
              L"num matches (   3 -    3) :    3 predicted    3  mean dist no prediction:     5.0000   "
              L"mean dist with prediction:     1.0000");
  }
  in.params.maxDistance = 0;
  in.descriptors2 = descriptorsWithOnes({1, 1, 1});
  LogCapture log(1500);
  EXPECT_TRUE(run(in).matches.empty());
  EXPECT_TRUE(log.of("MirelAlgorithms::matchQualityLog").empty());
}

TEST_F(MatchFeatures, EveryThreadIsTracedOnce) {
  const Input in = inputWithOnes({0, 500}, {0, 500});
  std::thread([&in] {  // a thread of its own has not been traced yet
    tbb::task_arena arena(1);
    for (const std::size_t lines : {1, 0}) {
      LogCapture log(1000);
      arena.execute([&] { run(in); });
      for (const char* function : {"MirelAlgorithms::matchForward", "MirelAlgorithms::matchBackward"}) {
        const auto records = log.of(function);
        ASSERT_EQ(records.size(), lines) << function;
        if (lines == 0) continue;
        EXPECT_EQ(records[0].level, 1000);
        EXPECT_EQ(records[0].message.rfind(L"lambda ", 0), 0u) << "unexpected text";
        EXPECT_NE(records[0].message.find(L" thread 0x"), std::wstring::npos);
      }
    }
  })
      .join();
  LogCapture silent(999);
  run(in);
  EXPECT_TRUE(silent.records.empty());
}

}  // namespace
