#include <MirelCore/Image.h>
#include <gtest/gtest.h>
#include <support/Matrices.h>

#include <climits>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

using MirelAlgorithms::same;
using MirelCore::enhance;
using MirelCore::subPixel;

namespace {

cv::Mat randomImage(cv::Size size, int type) {
  cv::Mat image(size, type);
  cv::RNG(76).fill(image, cv::RNG::UNIFORM, 0, image.depth() == CV_8U ? 256 : 65536);
  return image;
}

TEST(Enhance, EveryKindOfImageBecomesGrey8AndStaysAsItIs) {
  for (const int depth : {CV_8U, CV_16U})
    for (const int channels : {1, 3, 4})
      for (const cv::Size size : {cv::Size(1, 1), cv::Size(1, 9), cv::Size(33, 17)})
        for (const int strength : {INT_MIN, 0, 1, INT_MAX}) {
          const cv::Mat source = randomImage(size, CV_MAKETYPE(depth, channels)), before = source.clone();
          cv::Mat result;
          enhance(source, result, strength, {});
          EXPECT_EQ(result.type(), CV_8UC1);
          EXPECT_EQ(result.size(), size);
          EXPECT_NE(result.data, source.data);
          EXPECT_TRUE(same(source, before));
        }
}

TEST(Enhance, WithoutStrengthIsGreyConversion) {
  const cv::Mat grey = randomImage({40, 30}, CV_8UC1), colour = randomImage({40, 30}, CV_8UC3);
  cv::Mat result, expected;
  cv::cvtColor(colour, expected, cv::COLOR_BGR2GRAY);
  for (const int strength : {0, -1}) {
    enhance(grey, result, strength, {});
    EXPECT_TRUE(same(result, grey));
    enhance(colour, result, strength, {});
    EXPECT_TRUE(same(result, expected));
    enhance(cv::Mat_<ushort>({1, 6}, {0, 127, 129, 256, 32768, 65535}), result, strength, {});
    EXPECT_TRUE(same(result, cv::Mat_<uchar>({1, 6}, {0, 0, 1, 1, 128, 255})));
  }
  enhance(grey, result, 80000, {});
  EXPECT_FALSE(same(result, grey));
}

TEST(Enhance, NeverWritesIntoMemoryOfTheCaller) {
  const cv::Mat large = randomImage({60, 50}, CV_8UC1), before = large.clone();
  cv::Mat view = large(cv::Rect(7, 5, 31, 29)), result = large(cv::Rect(20, 20, 31, 29)), expected;
  enhance(view.clone(), expected, 80000, {});
  enhance(view, result, 80000, {});
  EXPECT_TRUE(same(result, expected));
  enhance(view, view, 80000, {});
  EXPECT_TRUE(same(view, expected));
  EXPECT_TRUE(same(large, before));
}

// Four squares that meet in (40, 30).
cv::Mat cornerImage() {
  cv::Mat image(60, 80, CV_8UC1, cv::Scalar(30));
  image(cv::Rect(0, 0, 40, 30)).setTo(220);
  image(cv::Rect(40, 30, 40, 30)).setTo(220);
  return image;
}

TEST(SubPixel, MovesKeyPointsToTheCorner) {
  std::vector<cv::KeyPoint> keyPoints{{41.0f, 31.0f, 15.0f, 20.0f, 0.5f}, {38.5f, 29.0f, 15.0f}};
  subPixel({cornerImage(), cv::Mat()}, 0, keyPoints);
  for (const cv::KeyPoint& keyPoint : keyPoints) {
    EXPECT_NEAR(keyPoint.pt.x, 39.5f, 0.1f);
    EXPECT_NEAR(keyPoint.pt.y, 29.5f, 0.1f);
  }
  EXPECT_EQ(keyPoints[0].size, 15.0f);
  EXPECT_EQ(keyPoints[0].angle, 20.0f);
  EXPECT_EQ(keyPoints[0].response, 0.5f);
}

TEST(SubPixel, LeavesCornersNearTheBorder) {
  for (const auto& [part, at] : {std::pair(cv::Rect(34, 0, 46, 60), cv::Point2f(5.9f, 30)),
                                 {cv::Rect(0, 24, 80, 36), {40, 5.9f}},
                                 {cv::Rect(0, 0, 46, 60), {40, 30}},
                                 {cv::Rect(0, 0, 80, 36), {40, 30}}}) {
    std::vector<cv::KeyPoint> keyPoints{{at, 1.0f}};
    subPixel({cornerImage()(part)}, 0, keyPoints);
    EXPECT_EQ(keyPoints[0].pt, at);
  }
}

TEST(SubPixel, LeavesWhatItCannotRefine) {
  const float notANumber = std::nanf("");
  const std::vector<cv::Point2f> given{{notANumber, 30}, {40, notANumber}, {1e30f, 5}, {-1e30f, 1e30f}, {20, 15}};
  std::vector<cv::KeyPoint> keyPoints;
  cv::KeyPoint::convert(given, keyPoints);
  const auto unchanged = [&](const std::vector<cv::Mat>& images) {
    subPixel(images, 0, keyPoints);
    for (std::size_t i = 0; i < given.size(); ++i) {
      EXPECT_TRUE(keyPoints[i].pt.x == given[i].x || std::isnan(given[i].x)) << i;
      EXPECT_TRUE(keyPoints[i].pt.y == given[i].y || std::isnan(given[i].y)) << i;
    }
  };
  unchanged({cornerImage()});
  keyPoints.emplace_back(41.0f, 31.0f, 1.0f);
  unchanged({});
  unchanged({cv::Mat(), cornerImage()});
  unchanged({cv::Mat(60, 80, CV_8UC3, cv::Scalar::all(1))});
  unchanged({cv::Mat(1, 1, CV_8UC1, cv::Scalar(1))});
  EXPECT_EQ(keyPoints.back().pt, cv::Point2f(41.0f, 31.0f));
}

}  // namespace
