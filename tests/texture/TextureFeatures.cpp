#include <MirelAlgorithms/texture/TextureFeatures.h>
#include <gtest/gtest.h>
#include <texture/LiteralTexture.h>
#include <texture/TextureTest.h>

#include <climits>
#include <cmath>
#include <stdexcept>

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
  cv::Mat colour;
  cv::cvtColor(image, colour, cv::COLOR_GRAY2BGR);
  expectLiteral(image, Settings(), 100);
  expectLiteral(colour, Settings(), 100);
  expectLiteral(image(cv::Rect(3, 5, 190, 170)), settingsOf({{L"txmToGray", 0}}), 100);

  struct Case {
    std::initializer_list<std::pair<const wchar_t*, int>> keys;
    std::size_t least;
  };
  const Case cases[] = {
      {{{L"txmCells", 12}, {L"txmMaxKeys", 90}}, 100},
      {{{L"txmCells", 1}, {L"txmMaxKeys", 50}}, 50},
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

TEST(TextureExtract, nothingToFind) {
  const cv::Mat flat(100, 120, CV_8UC1, cv::Scalar(90)), image = scene(200, 251, 2);
  for (const auto& [picture, settings] :
       {std::pair{flat, Settings()}, std::pair{image, settingsOf({{L"txmMaxKeys", 0}})}}) {
    Points points{{1, 2}};
    cv::Mat descriptors(3, 32, CV_8UC1);
    EXPECT_EQ(textureExtract(picture, points, descriptors, settings), 0);
    EXPECT_TRUE(points.size() == 1 && descriptors.empty());
  }
}

TEST(TextureExtract, outputsStayOnFailure) {
  const cv::Mat image = scene(120, 131, 3);
  Points points{{1, 2}};
  cv::Mat descriptors(3, 32, CV_8UC1);
  const uchar* before = descriptors.data;
  const auto expectUntouched = [&] { EXPECT_TRUE(points.size() == 1 && descriptors.data == before); };
  EXPECT_EQ(textureExtract(cv::Mat(), points, descriptors, settingsOf({{L"txmCells", 0}})), 1);
  expectUntouched();

  const std::pair<const wchar_t*, int> refused[] = {{L"txmCells", 0},
                                                    {L"txmCells", -1},
                                                    {L"txmCells", 121},
                                                    {L"txmCells", INT_MIN},
                                                    {L"txmORBnLevels", 0},
                                                    {L"txmORBnLevels", INT_MIN},
                                                    {L"txmORBnLevels", 1001},
                                                    {L"txmORBfirstLevel", 200},
                                                    {L"txmORBmaxFeatures", -100},
                                                    {L"txmORBmaxFeatures", INT_MAX},
                                                    {L"txmORBedgeThreshold", INT_MAX},
                                                    {L"txmORBpatchSize", INT_MAX}};
  for (const auto& [key, value] : refused) {
    SCOPED_TRACE(testing::Message() << key << " = " << value);
    EXPECT_THROW(textureExtract(image, points, descriptors, settingsOf({{key, value}})), std::invalid_argument);
    expectUntouched();
  }
  EXPECT_THROW(textureExtract(image, points, descriptors, with(L"txmORBscaleFactor", 0.0)), std::invalid_argument);
  EXPECT_THROW(textureExtract(cv::Mat(9, 9, CV_32FC1), points, descriptors, Settings()), std::invalid_argument);

  const std::pair<const wchar_t*, int> refusedByOpenCv[] = {
      {L"txmCells", 17}, {L"txmORBfirstLevel", -1}, {L"txmORBpatchSize", 1}, {L"txmORBWTA_K", 5}};
  for (const auto& [key, value] : refusedByOpenCv) {
    SCOPED_TRACE(testing::Message() << key << " = " << value);
    EXPECT_THROW(textureExtract(image, points, descriptors, settingsOf({{key, value}})), cv::Exception);
    expectUntouched();
  }
  for (const double factor : {std::nan(""), -1.2, 0.95, HUGE_VAL}) {
    SCOPED_TRACE(factor);
    EXPECT_ANY_THROW(textureExtract(image, points, descriptors, with(L"txmORBscaleFactor", factor)));
    expectUntouched();
  }
}

}  // namespace
}  // namespace MirelAlgorithms
