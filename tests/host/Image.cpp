#include <MirelCore/Image.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

using MirelCore::enhance;
using MirelCore::subPixel;

namespace {

cv::Mat randomImage(cv::Size size, int type, std::uint64_t seed = 76) {
  cv::Mat image(size, type);
  cv::RNG(seed).fill(image, cv::RNG::UNIFORM, 0, image.depth() == CV_8U ? 256 : 65536);
  return image;
}

bool sameBytes(const cv::Mat& a, const cv::Mat& b) {
  return a.size() == b.size() && a.type() == b.type() &&
         (a.empty() || cv::norm(a.reshape(1), b.reshape(1), cv::NORM_INF) == 0.0);
}

TEST(Enhance, EveryKindOfImageBecomesGrey8AndStaysAsItIs) {
  for (const int depth : {CV_8U, CV_16U})
    for (const int channels : {1, 3, 4})
      for (const cv::Size size : {cv::Size(1, 1), cv::Size(1, 9), cv::Size(7, 3), cv::Size(33, 17)})
        for (const int strength : {INT_MIN, 0, 1, 80000, INT_MAX}) {
          const cv::Mat source = randomImage(size, CV_MAKETYPE(depth, channels)), before = source.clone();
          cv::Mat result;
          enhance(source, result, strength, {});
          EXPECT_EQ(result.type(), CV_8UC1);
          EXPECT_EQ(result.size(), size);
          EXPECT_NE(result.data, source.data);
          EXPECT_TRUE(sameBytes(source, before));
        }
}

TEST(Enhance, WithoutStrengthIsGreyConversion) {
  const cv::Mat grey = randomImage({40, 30}, CV_8UC1), colour = randomImage({40, 30}, CV_8UC3);
  cv::Mat result, expected;
  for (const int strength : {0, -1}) {
    enhance(grey, result, strength, {});
    EXPECT_TRUE(sameBytes(result, grey));
    enhance(colour, result, strength, {});
    cv::cvtColor(colour, expected, cv::COLOR_BGR2GRAY);
    EXPECT_TRUE(sameBytes(result, expected));
    enhance(cv::Mat_<ushort>({1, 6}, {0, 127, 129, 256, 32768, 65535}), result, strength, {});
    EXPECT_TRUE(sameBytes(result, cv::Mat_<uchar>({1, 6}, {0, 0, 1, 1, 128, 255})));
  }
  enhance(grey, result, 80000, {});
  EXPECT_FALSE(sameBytes(result, grey));
}

TEST(Enhance, NeverWritesIntoMemoryOfTheCaller) {
  const cv::Mat large = randomImage({60, 50}, CV_8UC1), before = large.clone();
  cv::Mat expected;
  enhance(large(cv::Rect(7, 5, 31, 29)).clone(), expected, 80000, {});

  cv::Mat view = large(cv::Rect(7, 5, 31, 29)), result = large(cv::Rect(20, 20, 31, 29));
  enhance(view, result, 80000, {});
  EXPECT_TRUE(sameBytes(result, expected));
  enhance(view, view, 80000, {});
  EXPECT_TRUE(sameBytes(view, expected));
  EXPECT_TRUE(sameBytes(large, before));
}

TEST(Enhance, SameBitsForAnyNumberOfThreads) {
  const cv::Mat image = randomImage({641, 479}, CV_8UC1);
  cv::Mat expected, result;
  const int threads = cv::getNumThreads();
  cv::setNumThreads(1);
  enhance(image, expected, 80000, {});
  for (const int count : {2, 3, 8}) {
    cv::setNumThreads(count);
    enhance(image, result, 80000, {});
    EXPECT_TRUE(sameBytes(result, expected)) << count;
  }
  cv::setNumThreads(threads);
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

TEST(SubPixel, LeavesWhatItCannotRefine) {
  const float large = 1e30f, notANumber = std::nanf("");
  const std::vector<cv::Point2f> given{{0, 0},     {5.9f, 30},      {40, 5.9f},       {74, 30},
                                       {40, 54},   {-3, 30},        {notANumber, 30}, {40, notANumber},
                                       {large, 5}, {-large, large}, {20.f, 15.f}};  // the last one lies on an even area
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
  unchanged({cv::Mat()});
  unchanged({cv::Mat(), cornerImage()});
  unchanged({cv::Mat(60, 80, CV_8UC3, cv::Scalar::all(1))});
  unchanged({cv::Mat(60, 80, CV_16UC1, cv::Scalar::all(1))});
  unchanged({cv::Mat(1, 1, CV_8UC1, cv::Scalar::all(1))});
  EXPECT_EQ(keyPoints.back().pt, cv::Point2f(41.0f, 31.0f));
}

}  // namespace
