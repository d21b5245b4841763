#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/matching/FeatureMatching.h>
#include <gtest/gtest.h>
#include <matching/LiteralMatching.h>
#include <matching/MatchingInputs.h>
#include <tbb/task_arena.h>

#include <cstring>

namespace {

auto bitsOf(float value) {
  std::uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

auto fieldsOf(const Output& out) {
  std::vector<std::tuple<int, int, int, std::uint32_t, std::uint32_t>> matches;
  for (const FBMatch& m : out.matches)
    matches.emplace_back(m.queryIdx, m.trainIdx, m.distance, bitsOf(m.predictedX), bitsOf(m.predictedY));
  std::vector<std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, int>> predictions;
  for (const FBPrediction& p : out.predictions)
    predictions.emplace_back(bitsOf(p.x), bitsOf(p.y), bitsOf(p.searchRadiusSq), p.state);
  return std::tuple(out.enough, matches, predictions);
}

/// The library gives the same bits as the literal loops, with every instruction set.
class MatchFeatures : public testing::Test {
 protected:
  ~MatchFeatures() override { limitCpuVariant(CpuVariant::avx512); }

  static void expectLiteral(const Input& in, const Output& expected) {
    for (const CpuVariant variant : {CpuVariant::baseline, CpuVariant::avx2, CpuVariant::avx512}) {
      SCOPED_TRACE(name(variant));
      limitCpuVariant(variant);
      EXPECT_EQ(fieldsOf(run(in)), fieldsOf(expected));
    }
  }
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
    SCOPED_TRACE(testing::Message() << "round " << round << ", " << threads << " threads");
    tbb::task_arena(threads).execute([&] { expectLiteral(in, expected); });
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
    expectLiteral(in, run(in, literal::matchFeatures));
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
  const Output expected = run(in, literal::matchFeatures);
  ASSERT_EQ(expected.matches.size(), 1u);
  EXPECT_EQ(expected.matches[0].distance, 65600 - 65536);
  expectLiteral(in, expected);
}

}  // namespace
