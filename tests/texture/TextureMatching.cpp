#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/texture/TextureMatching.h>
#include <gtest/gtest.h>
#include <matching/MatchingInputs.h>
#include <texture/LiteralTexture.h>
#include <texture/TextureTest.h>

#include <cmath>
#include <cstdlib>

namespace {

using Matches = std::vector<cv::Vec3i>;

// Few bits make many equal distances, and quotients that meet their bounds: 0.7 is less in single precision, 0 / 0 is
// none.
TEST(TextureMatch, agreesWithTheLiteralStepsOnEveryInstructionSet) {
  Random random(3);
  const std::tuple<int, int, int> sizes[] = {{1, 1, 7},   {1, 2, 13},   {2, 1, 8},     {2, 2, 33},    {3, 9, 2047},
                                             {70, 1, 31}, {40, 37, 13}, {33, 512, 64}, {20, 1100, 32}};
  std::size_t found = 0;
  for (const CpuVariant variant : {CpuVariant::baseline, CpuVariant::avx2, CpuVariant::avx512})
    for (const auto& [rows1, rows2, width] : sizes)
      for (const double ratio : {0.8, 0.7, 1.0, 1.5, 0.0, -1.0, std::nan("")})
        for (int round = 0; round < 6; ++round) {
          limitCpuVariant(variant);
          cv::Mat descriptors1 = randomDescriptors(random, static_cast<std::size_t>(rows1), width);
          cv::Mat descriptors2 = randomDescriptors(random, static_cast<std::size_t>(rows2), width);
          descriptors1 &= round % 2 ? 255 : 17;
          descriptors2 &= round % 2 ? 255 : 17;
          const Settings settings = with(L"txmUniquenessRatio", ratio, settingsOf({{L"txmORBWTA_K", 2 + round % 3}}));
          Matches matches{{7, 8, 9}}, expected = matches;
          for (const cv::DMatch& match : literal::agreedMatches(descriptors1, descriptors2, settings))
            expected.emplace_back(match.queryIdx, match.trainIdx, static_cast<int>(match.distance));
          EXPECT_EQ(textureMatch(descriptors1, descriptors2, matches, settings), 0);
          EXPECT_EQ(matches, expected) << rows1 << " and " << rows2 << " rows of " << width << ", ratio " << ratio;
          found += matches.size() - 1;
        }
  limitCpuVariant(CpuVariant::avx512);
  EXPECT_GT(found, 2000u);
}

// Features with descriptors of their own, moved by a shift from one set to the other.
TEST(TextureMatch, gatesAsByTheLiteralSteps) {
  struct Case {
    int count;
    cv::Vec2f shift;
    Settings settings;
    std::size_t expected;
    void (*change)(Points&, Points&) = [](Points&, Points&) {};
  };
  const auto outlier = [](Points& a, Points&) { a[5] += cv::Vec2f(20, 20); };
  const auto withoutNumber = [](Points& a, Points&) { a[2][1] = notANumber; };
  const auto oneSpot = [](Points& a, Points& b) { a = b = Points(8, {5, 5}); };
  for (const Case& c :
       {Case{8, {300, 400}, {}, 8}, Case{8, {300, 400.01f}, {}, 0}, Case{8, {3, 4}, with(L"txmMaxKeyDist", -5.0), 8},
        Case{8, {3, 4}, with(L"txmMaxKeyDist", 4.9), 0}, Case{8, {3, 4}, with(L"txmMaxKeyDist", std::nan("")), 0},
        Case{4, {3, 4}, {}, 0}, Case{5, {3, 4}, {}, 5}, Case{8, {3, 4}, {}, 7, outlier},
        Case{8, {3, 4}, {}, 7, withoutNumber}, Case{8, {3, 4}, with(L"txmReprojectionError", 1000.0), 8, outlier},
        Case{8, {0, 0}, {}, 0, oneSpot}}) {
    const cv::Mat descriptors = noise(c.count, 32, 5);
    Points points1, points2;
    for (int i = 0; i < c.count; ++i) {
      points1.emplace_back(static_cast<float>(i * 37 % 101), static_cast<float>(i * i % 89));
      points2.push_back(points1.back() + c.shift);
    }
    c.change(points1, points2);
    Matches matches;
    EXPECT_EQ(textureMatch(points1, descriptors, points2, descriptors, matches, c.settings), 0);
    EXPECT_EQ(matches.size(), c.expected);
    EXPECT_EQ(matches, literal::match(points1, descriptors, points2, descriptors, c.settings));
  }
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
TEST(TextureExtractAndMatch, drawsIntoMemory) {
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  const cv::Mat image = scene(200, 220, 3);
  Points points1, points2;
  cv::Mat deep;
  image.convertTo(deep, CV_16U, 256.0);
  EXPECT_THROW(textureExtractAndMatch(deep, image, points1, points2, settingsOf({{L"txmDraw", 1}})), cv::Exception);
  EXPECT_TRUE(points1.empty());
  EXPECT_EQ(textureExtractAndMatch(image, image, points1, points2, settingsOf({{L"txmDraw", 1}})), 0);
  EXPECT_GT(points1.size(), 40u);
}
#endif

}  // namespace
