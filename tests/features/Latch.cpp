// The library's own loop of LATCH against the module's, on the same smoothed image.
#include <MirelAlgorithms/features/internal/Latch.h>
#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <features/FeatureTest.h>
#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#if WITH_XFEATURES2D

namespace MirelAlgorithms {
namespace {

// Half of all pixels black or white, so that the sums become large.
cv::Mat blackAndWhiteNoise() {
  cv::Mat image(263, 251, CV_8UC1);
  cv::RNG(1).fill(image, cv::RNG::UNIFORM, -256, 512, true);
  return image;
}

cv::Mat modulesDescriptors(const cv::Mat& image, std::vector<cv::KeyPoint>& keyPoints, const LatchSettings& settings) {
  cv::Mat storage = cv::Mat::zeros(image.rows + 2, image.cols, CV_8UC1), smoothed = storage.rowRange(0, image.rows);
  cv::GaussianBlur(image, smoothed, cv::Size(3, 3), 2.0, 2.0);
  cv::Mat descriptors;
  cv::xfeatures2d::LATCH::create(settings.bytes, true, settings.halfPatch, 0.0)
      ->compute(smoothed, keyPoints, descriptors);
  return descriptors;
}

// Everywhere, and around the outermost positions that are accepted.
std::vector<cv::KeyPoint> keyPointsWith(int margin, const cv::Size& image) {
  cv::RNG random(2);
  std::vector<cv::KeyPoint> keyPoints;
  const auto add = [&](float x, float y) {
    const float angles[] = {-1.0f, 90.0f, random.uniform(0.0f, 360.0f), random.uniform(-1000.0f, 0.0f), 1e30f};
    keyPoints.emplace_back(x, y, 7.0f, angles[keyPoints.size() % 5]);
  };
  for (int i = 0; i < 12; ++i) add(random.uniform(0.0f, float(image.width)), random.uniform(0.0f, float(image.height)));
  for (const float d : {-0.51f, -0.5f, -0.49f, 0.0f, 0.5f}) {
    add(margin + d, random.uniform(margin, image.height - margin));
    add(random.uniform(margin, image.width - margin), margin + d);
    add(image.width - margin - 1 - d, random.uniform(margin, image.height - margin));
    add(random.uniform(margin, image.width - margin), image.height - margin - 1 - d);
    add(image.width - margin - 1 - d, image.height - margin - 1 - d);
  }
  return keyPoints;
}

TEST(Latch, equalsTheModulesOnEveryInstructionSet) {
  std::vector<LatchSettings> cases{{2, 90}};
  for (const int bytes : {1, 2, 4, 8, 16, 32, 64}) cases.push_back({bytes, 3});
  for (const int halfPatch : {0, 1, 2, 4, 7, 8, 12, 30}) cases.push_back({4, halfPatch});
  const cv::Mat image = blackAndWhiteNoise(), before = image.clone();
  for (const LatchSettings& settings : cases) {
    SCOPED_TRACE(testing::Message() << settings.bytes << " bytes, half patch " << settings.halfPatch);
    const auto keyPoints = keyPointsWith(24 + settings.halfPatch, image.size());
    auto expectedKeys = keyPoints;
    const cv::Mat expected = modulesDescriptors(image, expectedKeys, settings);
    ASSERT_GT(expected.rows, 10);
    ASSERT_LT(expectedKeys.size(), keyPoints.size());
    for (const CpuVariant variant : {CpuVariant::baseline, CpuVariant::avx2, CpuVariant::avx512}) {
      limitCpuVariant(variant);
      auto keys = keyPoints;
      cv::Mat descriptors;
      computeLatch("test", image, keys, descriptors, settings);
      ASSERT_EQ(descriptors.size(), expected.size());
      EXPECT_EQ(cv::norm(descriptors, expected, cv::NORM_HAMMING), 0) << name(variant);
      EXPECT_TRUE(std::equal(keys.begin(), keys.end(), expectedKeys.begin(), expectedKeys.end(),
                             [](const auto& a, const auto& b) { return a.pt == b.pt && a.angle == b.angle; }));
    }
  }
  EXPECT_EQ(cv::norm(image, before, cv::NORM_INF), 0);
}

}  // namespace
}  // namespace MirelAlgorithms

#endif
