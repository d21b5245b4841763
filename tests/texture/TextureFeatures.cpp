#include <MirelAlgorithms/texture/TextureFeatures.h>
#include <gtest/gtest.h>
#include <texture/LiteralTexture.h>
#include <texture/TextureTest.h>

namespace MirelAlgorithms {
namespace {

// Appended and replaced; equal to the literal steps.
void expectLiteral(const cv::Mat& image, const Settings& settings, std::size_t least) {
  const literal::Features expected = literal::extract(image, settings);
  Points all{{1, 2}};
  for (const cv::Vec2f& point : literal::positions(expected.keyPoints)) all.push_back(point);
  EXPECT_GE(expected.keyPoints.size(), least);

  Points points{{1, 2}};
  cv::Mat descriptors(3, 32, CV_8UC1);
  EXPECT_EQ(textureExtract(image, points, descriptors, settings), 0);
  EXPECT_EQ(points, all);
  EXPECT_TRUE(same(descriptors, expected.descriptors));
}

TEST(TextureExtract, equalsTheLiteralSteps) {
  const cv::Mat image = scene(200, 247, 1);
  expectLiteral(image, Settings(), 100);
  expectLiteral(image(cv::Rect(3, 5, 190, 170)), settingsOf({{L"txmToGray", 0}}), 100);

  struct Case {
    std::initializer_list<std::pair<const wchar_t*, int>> keys;
    std::size_t least;
  };
  const Case cases[] = {
      {{{L"txmCells", 12}, {L"txmMaxKeys", 90}}, 100},
      {{{L"txmMaxKeys", 2}}, 0},
      {{{L"txmMaxKeys", -5}}, 100},
      {{{L"txmORBWTA_K", 3}, {L"txmORBscoreType", 1}}, 100},
      {{{L"txmORBWTA_K", 4}, {L"txmORBscoreType", -7}, {L"txmORBpatchSize", 21}, {L"txmORBedgeThreshold", 19}}, 100},
      {{{L"txmORBfirstLevel", 1}, {L"txmORBnLevels", 3}, {L"txmORBfastThreshold", 5}}, 100},
      {{{L"txmORBmaxFeatures", 20}, {L"txmORBedgeThreshold", 0}}, 50},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "case " << &c - cases);
    expectLiteral(image, settingsOf(c.keys), c.least);
  }
  expectLiteral(scene(131, 131, 4), settingsOf({{L"txmCells", 12}}), 30);  // 13 whole cells on each side
  expectLiteral(image, with(L"txmORBscaleFactor", 1.2), 100);
}

}  // namespace
}  // namespace MirelAlgorithms
