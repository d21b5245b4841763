#include <MirelAlgorithms/texture/TextureMatching.h>
#include <gtest/gtest.h>
#include <matching/MatchingInputs.h>
#include <texture/LiteralTexture.h>
#include <texture/TextureTest.h>

#include <cstdlib>

namespace {

using Matches = std::vector<cv::Vec3i>;

TEST(TextureMatch, ratioAndAgreement) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  struct Case {
    const char* what;
    std::initializer_list<int> ones1, ones2;  // distances are their differences
    double ratio;
    Matches expected;
  };
  const Case cases[] = {
      {"distinct both ways", {0, 100}, {10, 90, 500}, 0.8, {{0, 0, 10}, {1, 1, 10}}},
      {"quotient 0.7 in single precision is below 0.7", {0, 400}, {70, 100}, 0.7, {{0, 0, 70}}},
      {"quotient at the bound", {0, 300}, {50, 50}, 1.0, {}},
      {"the first of two equal ones", {0, 300}, {50, 50}, 1.5, {{0, 0, 50}}},
      {"0 / 0", {0, 0}, {0, 0}, 0.8, {{0, 0, 0}}},
      {"no next nearest", {0}, {30}, 0.8, {}},
      {"nearest alone", {0}, {30}, 0.0, {{0, 0, 30}}},
      {"nearest alone, ratio below 0", {0}, {30}, -1.0, {{0, 0, 30}}},
      {"nearest alone, no number", {0}, {30}, nan, {{0, 0, 30}}},
      {"one direction alone", {0, 20}, {8, 100}, 0.0, {{0, 0, 8}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Matches matches{{7, 8, 9}}, expected = c.expected;
    expected.insert(expected.begin(), cv::Vec3i(7, 8, 9));
    EXPECT_EQ(textureMatch(descriptorsWithOnes(c.ones1), descriptorsWithOnes(c.ones2), matches,
                           with(L"txmUniquenessRatio", c.ratio)),
              0);
    EXPECT_EQ(matches, expected);
  }
}

TEST(TextureMatch, pairsOfBits) {
  const cv::Mat one = (cv::Mat_<uchar>(1, 1) << 0), other = (cv::Mat_<uchar>(1, 1) << 7);
  for (const auto& [points, distance] : {std::pair{2, 3}, {3, 2}, {4, 2}}) {
    Matches matches;
    textureMatch(one, other, matches, with(L"txmUniquenessRatio", 0.0, settingsOf({{L"txmORBWTA_K", points}})));
    EXPECT_EQ(matches, Matches({{0, 0, distance}})) << points;
  }
}

// Features with descriptors of their own, moved by a shift from one set to the other.
struct Shifted {
  Points points1, points2;
  cv::Mat descriptors;

  Shifted(int count, float dx, float dy) : descriptors(noise(count, 32, 5)) {
    for (int i = 0; i < count; ++i) {
      points1.emplace_back(static_cast<float>(i * 37 % 101), static_cast<float>(i * i % 89));
      points2.push_back(points1.back() + cv::Vec2f(dx, dy));
    }
  }
  std::size_t matches(const Settings& settings) {
    Matches found;
    EXPECT_EQ(textureMatch(points1, descriptors, points2, descriptors, found, settings), 0);
    return found.size();
  }
};

TEST(TextureMatch, gates) {
  const auto within = [](double distance) { return with(L"txmMaxKeyDist", distance); };
  EXPECT_EQ(Shifted(8, 300, 400).matches({}), 8u);
  EXPECT_EQ(Shifted(8, 300, 400.01f).matches({}), 0u);
  EXPECT_EQ(Shifted(8, 3, 4).matches(within(-5)), 8u);
  EXPECT_EQ(Shifted(8, 3, 4).matches(within(-4.9)), 0u);
  EXPECT_EQ(Shifted(4, 3, 4).matches({}), 0u);
  EXPECT_EQ(Shifted(5, 3, 4).matches({}), 5u);

  Shifted withOutlier(8, 3, 4);
  withOutlier.points2[5] += cv::Vec2f(20, 20);
  EXPECT_EQ(withOutlier.matches({}), 7u);
  EXPECT_EQ(withOutlier.matches(with(L"txmReprojectionError", 1000.0)), 8u);
}

TEST(TextureExtractAndMatch, equalsTheLiteralSteps) {
  const cv::Mat image1 = scene(240, 300, 1), image2 = seenAside(image1, 9);
  for (const Settings& settings : {Settings(), with(L"txmUniquenessRatio", 0.0, settingsOf({{L"txmORBWTA_K", 4}})),
                                   with(L"txmMaxKeyDist", 8.0), with(L"txmReprojectionError", 0.5)}) {
    const auto features1 = literal::extract(image1, settings), features2 = literal::extract(image2, settings);
    const Points at1 = literal::positions(features1.keyPoints), at2 = literal::positions(features2.keyPoints);
    Points expected1{{1, 2}}, expected2, points1 = expected1, points2;
    for (const cv::Vec3i& match : literal::match(at1, features1.descriptors, at2, features2.descriptors, settings)) {
      expected1.push_back(at1[static_cast<std::size_t>(match[0])]);
      expected2.push_back(at2[static_cast<std::size_t>(match[1])]);
    }
    EXPECT_GT(expected2.size(), 40u);
    EXPECT_EQ(textureExtractAndMatch(image1, image2, points1, points2, settings), 0);
    EXPECT_EQ(points1, expected1);
    EXPECT_EQ(points2, expected2);
  }
}

#ifdef __SANITIZE_ADDRESS__
// Qt's windows keep the list of fonts.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:libfontconfig";
}
#endif

#ifdef __linux__
class Drawing : public testing::Test {
 protected:
  Drawing() { unsetenv("QT_QPA_PLATFORM"); }
  ~Drawing() override { setenv("QT_QPA_PLATFORM", "offscreen", 1); }

  const cv::Mat image = scene(200, 220, 3);
  Points points1, points2;
};

TEST_F(Drawing, intoMemory) {
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  cv::Mat deep;
  image.convertTo(deep, CV_16U, 256.0);
  EXPECT_THROW(textureExtractAndMatch(deep, image, points1, points2, settingsOf({{L"txmDraw", 1}})), cv::Exception);
  EXPECT_TRUE(points1.empty());
  EXPECT_EQ(textureExtractAndMatch(image, image, points1, points2, settingsOf({{L"txmDraw", 1}})), 0);
  EXPECT_GT(points1.size(), 40u);
}
#endif

}  // namespace
