#include <MirelAlgorithms/features/Descriptors.h>
#include <MirelAlgorithms/features/FeatureExtraction.h>
#include <MirelAlgorithms/features/FixedPointCorners.h>
#include <MirelAlgorithms/features/internal/Enhancement.h>
#include <MirelAlgorithms/features/internal/FeatureMatrix.h>
#include <features/DetectionTest.h>
#include <features/FeatureTest.h>
#include <gtest/gtest.h>
#include <support/Matrices.h>

#include <algorithm>
#include <cstring>

namespace MirelAlgorithms {
namespace {

// The steps of detection in cells, one by one.
std::vector<cv::KeyPoint> cellByCell(const cv::Mat& image, const cv::Ptr<cv::Feature2D>& detector, int cells,
                                     int budget) {
  const int quota = budget / (cells * cells), w = image.cols / cells, h = image.rows / cells;
  std::vector<cv::KeyPoint> result;
  for (int y0 = 0; y0 < image.rows - h / 2; y0 += h)
    for (int x0 = 0; x0 < image.cols - w / 2; x0 += w) {
      std::vector<cv::KeyPoint> found = detectMasked(*detector, image, cv::Rect(x0, y0, w, h));
      if (int(found.size()) > quota) {
        std::stable_sort(found.begin(), found.end(),
                         [](const auto& a, const auto& b) { return a.response > b.response; });
        found.resize(quota);
      }
      result.insert(result.end(), found.begin(), found.end());
    }
  return result;
}

cv::Ptr<cv::Feature2D> orb() { return cv::ORB::create(500, 1.2f, 8, 31, 0, 2, cv::ORB::HARRIS_SCORE, 31, 20); }

TEST(RetrieveFeatures, detectorsRunCellByCell) {
  struct Detector {
    int featureType;
    cv::Ptr<cv::Feature2D> detector;
  };
  const Detector detectors[] = {
      {0, cv::GFTTDetector::create(1000, 0.01, 1.0, 3, false, 0.04)},
      {1, cv::AKAZE::create(cv::AKAZE::DESCRIPTOR_MLDB, 256, 3, 0.0001f, 1, 4, cv::KAZE::DIFF_PM_G2)},
      {2, cv::MSER::create(5, 60, 14400, 0.25, 0.2, 200, 1.01, 0.003, 5)},
      {3, orb()},
      {7, orb()},
      {5, cv::BRISK::create(30, 3, 1.0f)},
  };
  // One column and two rows belong to no cell.
  const cv::Mat image = scene(182, 241, 1), before = image.clone();
  for (const Detector& d : detectors) {
    SCOPED_TRACE(testing::Message() << "FBMFeatureType " << d.featureType);
    const int budget = 120;
    const auto expected = cellByCell(enhanced(image, 70000), d.detector, 3, budget);
    ASSERT_GT(expected.size(), 40u);
    cv::Mat features;
    const Settings settings =
        settingsOf({{L"FBMType", 2}, {L"FBMFeatureType", d.featureType}, {L"FBMnFeatures", budget}});
    EXPECT_TRUE(retrieveFeatures(image, features, with(L"FBMEnhancement", 70000, settings), false));
    EXPECT_TRUE(features.isContinuous() && same(features, toFeatureMatrix(expected)));
    EXPECT_TRUE(same(image, before));
  }
}

TEST(RetrieveFeatures, otherTypesRefineOrb) {
  const cv::Mat image = scene(200, 260, 2), view = enhanced(image, 80000);
  auto expected = cellByCell(view, orb(), 3, 2000);
  const cv::Mat unrefined = toFeatureMatrix(expected);
  MirelCore::subPixel({view}, 0, expected);
  ASSERT_FALSE(same(unrefined, toFeatureMatrix(expected)));
  for (const int type : {1, 7, -2}) {
    cv::Mat features;
    EXPECT_TRUE(retrieveFeatures(image, features, settingsOf({{L"FBMType", type}}), true));
    EXPECT_TRUE(same(features, toFeatureMatrix(expected))) << "FBMType " << type;
  }
}

TEST(RetrieveFeatures, budgetIs2000ByDefault) {
  cv::Mat features;
  retrieveFeatures(noise(180, 240, 3), features, settingsOf({{L"FBMType", 2}, {L"FBMFeatureType", 0}}), false);
  EXPECT_EQ(features.rows, 9 * 222);
}

TEST(RetrieveFeatures, descriptionRewritesFeatures) {
  const cv::Mat image = scene(180, 240, 4);
  const Settings settings = settingsOf({{L"FBMType", 2}, {L"FBMFeatureType", 0}, {L"FBMDescriptorType", 4}});
  cv::Mat all, described, expected, descriptors;
  retrieveFeatures(image, all, settings, false);
  retrieveFeatures(image, described, settings, true);
  expected = all.clone();
  retrieveDescriptors(image, expected, descriptors, settings);
  EXPECT_LT(described.rows, all.rows) << "the border has no ORB descriptor";
  EXPECT_TRUE(same(described, expected));
}

TEST(RetrieveFeatures, keyPointsWithDescriptors) {
  const cv::Mat image = scene(200, 260, 6), before = image.clone();
  const Settings settings =
      settingsOf({{L"FBMType", 0}, {L"FBMnFeatures", 180}, {L"DescLengthBytes", 8}, {L"PatchSize", 12}});
  std::vector<cv::KeyPoint> keyPoints(3);
  cv::Mat descriptors;
#if WITH_XFEATURES2D
  const cv::Mat view = enhanced(image, 80000);
  auto expected = cellByCell(view, orb(), 3, 180);
  MirelCore::subPixel({view}, 0, expected);
  const std::size_t detected = expected.size();
  cv::Mat expectedDescriptors;
  cv::xfeatures2d::LATCH::create(8, true, 12, 2.0)->compute(view.clone(), expected, expectedDescriptors);
  ASSERT_LT(expected.size(), detected);

  EXPECT_TRUE(retrieveFeatures(image, keyPoints, descriptors, settings));
  ASSERT_EQ(keyPoints.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(keyPoints[i].octave, expected[i].octave);
    EXPECT_EQ(keyPoints[i].class_id, expected[i].class_id);
  }
  EXPECT_TRUE(same(toFeatureMatrix(keyPoints), toFeatureMatrix(expected)));
  EXPECT_TRUE(same(descriptors, expectedDescriptors));
#else
  EXPECT_THROW(retrieveFeatures(image, keyPoints, descriptors, settings), std::runtime_error);
  EXPECT_EQ(keyPoints.size(), 3u);
#endif
  EXPECT_TRUE(same(image, before));
}

}  // namespace
}  // namespace MirelAlgorithms
