#include <MirelAlgorithms/texture/TextureFeatures.h>
#include <gtest/gtest.h>
#include <texture/LiteralTexture.h>
#include <texture/TextureTest.h>

namespace MirelAlgorithms {
namespace {

// Points are appended, descriptors replaced.
TEST(TextureExtract, equalsTheLiteralSteps) {
  const cv::Mat image = scene(200, 247, 1), view = image(cv::Rect(3, 5, 190, 170)), small = scene(131, 131, 4);
  struct Case {
    cv::Mat image;
    Settings settings;
    std::size_t least;
  };
  const Case cases[] = {
      {image, {}, 100},
      {view, settingsOf({{L"txmToGray", 0}}), 100},
      {small, settingsOf({{L"txmCells", 12}}), 30},  // 13 whole cells on each side
      {image, settingsOf({{L"txmCells", 12}, {L"txmMaxKeys", 90}}), 100},
      {image, settingsOf({{L"txmMaxKeys", 2}}), 0},
      {image, settingsOf({{L"txmMaxKeys", -5}}), 100},
      {image, settingsOf({{L"txmORBWTA_K", 3}, {L"txmORBscoreType", 1}}), 100},
      {image, settingsOf({{L"txmORBscoreType", -7}, {L"txmORBpatchSize", 21}, {L"txmORBedgeThreshold", 19}}), 100},
      {image, settingsOf({{L"txmORBfirstLevel", 1}, {L"txmORBnLevels", 3}, {L"txmORBfastThreshold", 5}}), 100},
      {image, settingsOf({{L"txmORBmaxFeatures", 20}, {L"txmORBedgeThreshold", 0}}), 50},
      {image, with(L"txmORBscaleFactor", 1.3), 100},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "case " << &c - cases);
    const literal::Features expected = literal::extract(c.image, c.settings);
    EXPECT_GE(expected.keyPoints.size(), c.least);
    Points points{{1, 2}}, all = points;
    for (const cv::Vec2f& point : literal::positions(expected.keyPoints)) all.push_back(point);
    cv::Mat descriptors(3, 32, CV_8UC1);
    EXPECT_EQ(textureExtract(c.image, points, descriptors, c.settings), 0);
    EXPECT_EQ(points, all);
    EXPECT_TRUE(same(descriptors, expected.descriptors));
  }
}

}  // namespace
}  // namespace MirelAlgorithms
