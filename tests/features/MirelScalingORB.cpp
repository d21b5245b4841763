#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <gtest/gtest.h>
#include <support/Matrices.h>

#include <cfloat>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>

#include "LiteralOrb.h"

namespace MirelAlgorithms {
namespace {

// Inside, across every border, and where numbers become too large for integers.
std::vector<cv::KeyPoint> keyPointsAround(const cv::Mat& image) {
  cv::RNG random(3);
  std::vector<cv::KeyPoint> keyPoints;
  for (int i = 0; i < 600; ++i) {
    const float margin = i % 3 == 0 ? 90.0f : -25.0f;
    keyPoints.emplace_back(random.uniform(-margin, image.cols + margin), random.uniform(-margin, image.rows + margin),
                           random.uniform(-1.0f, i % 2 ? 1.3f : 40.0f), random.uniform(-400.0f, 400.0f));
  }
  for (const float size : {0.0f, 1.0f, 0.5f, 5e4f, 1048576.0f, 1048577.0f, -3e9f, 1e30f, FLT_MAX, -FLT_MAX})
    for (const float position : {0.5f, 59.5f, -7.0f, 16777216.0f, -16777218.0f, 4e9f, -3e38f})
      keyPoints.emplace_back(position, 60.0f, size, position), keyPoints.emplace_back(61.0f, position, size, -1.0f);
  return keyPoints;
}

TEST(MirelScalingORB, equalsPixelByPixelFormOnEveryInstructionSet) {
  const cv::Mat whole = noise(300, 340, 1);
  for (const cv::Mat& image : {whole, whole(cv::Rect(31, 17, 125, 140)), whole.col(5), whole(cv::Rect(9, 9, 1, 1))}) {
    SCOPED_TRACE(testing::Message() << image.size());
    const auto keyPoints = keyPointsAround(image);
    const cv::Mat expected = literal::descriptors(image, keyPoints);
    for (const CpuVariant variant : {CpuVariant::baseline, CpuVariant::avx2, CpuVariant::avx512}) {
      limitCpuVariant(variant);
      EXPECT_TRUE(same(MirelScalingORB(image).getDescriptors(keyPoints), expected)) << name(variant);
    }
  }
}

// OpenCV's ORB does the same on the image smoothed with its kernel, for size 1 and angles in degrees the other way. It
// smooths a view of a larger image, for which OpenCV rounds in another way.
TEST(MirelScalingORB, equalsOrbAtSizeOne) {
  const cv::Mat image = noise(250, 280, 4)(cv::Rect(20, 20, 230, 200));
  cv::Mat smoothed;
  cv::GaussianBlur(image, smoothed, cv::Size(7, 7), 2, 2, cv::BORDER_REFLECT_101);
  cv::RNG random(5);
  std::vector<cv::KeyPoint> degrees, radians;
  for (int i = 0; i < 200; ++i) {
    degrees.emplace_back(random.uniform(40.0f, 190.0f), random.uniform(40.0f, 160.0f), 31.0f,
                         random.uniform(0.0f, 360.0f), 0.0f, 0);
    radians.emplace_back(degrees.back().pt, 1.0f, -(degrees.back().angle * float(CV_PI / 180.f)));
  }
  cv::Mat expected;
  cv::ORB::create(500, 1.2f, 1)->compute(image, degrees, expected);
  ASSERT_EQ(degrees.size(), radians.size());
  EXPECT_TRUE(same(MirelScalingORB(smoothed).getDescriptors(radians), expected));
}

TEST(MirelScalingORB, patchIsReadFromItsMiddleElement) {
  const cv::Mat whole = noise(90, 90, 7);
  for (const cv::Size size :
       {cv::Size(31, 31), cv::Size(32, 31), cv::Size(31, 32), cv::Size(40, 64), cv::Size(45, 33)}) {
    const cv::Mat patch = whole(cv::Rect(cv::Point(20, 10), size)).clone();
    const cv::Mat expected = literal::patchDescriptor(patch);
    for (const cv::Mat& form : {patch, whole(cv::Rect(cv::Point(20, 10), size))})
      for (const int count : {0, 1, 31, 32}) {
        unsigned char bytes[34];
        std::fill(std::begin(bytes), std::end(bytes), 77);
        MirelScalingORB::getNormalizedPatchDescriptor(form, bytes, count);
        EXPECT_TRUE(std::equal(bytes, bytes + count, expected.data)) << size << ", " << count;
        EXPECT_TRUE(std::all_of(bytes + count, std::end(bytes), [](int b) { return b == 77; }))
            << size << ", " << count;
      }
  }
}

}  // namespace
}  // namespace MirelAlgorithms
