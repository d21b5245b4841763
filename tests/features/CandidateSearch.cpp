#include <MirelAlgorithms/features/internal/CandidateSearch.h>
#include <MirelAlgorithms/features/internal/FeatureMatrix.h>
#include <gtest/gtest.h>
#include <support/Matrices.h>

#include <cmath>

#include "CornerScenes.h"
#include "LiteralCorners.h"

namespace MirelAlgorithms {
namespace {

// Values along x for which the fit's extremum is exactly 1.5 from the maximum, values along y that are symmetric.
TEST(CandidateSearch, extremumIsLessThanOneAndAHalfPixelsAway) {
  const float alongX[] = {-20, -6, -6, 0, -1, -1, -20};
  for (const float change : {0.0f, 0.01f})
    for (const bool transposed : {false, true}) {
      cv::Mat map(30, 30, CV_32FC1, cv::Scalar(0.0));
      for (int y = -3; y <= 3; ++y)
        for (int x = -3; x <= 3; ++x)
          map.at<float>(12 + y, 14 + x) = 100.0f + alongX[x + 3] - static_cast<float>(y * y);
      map.at<float>(12, 14) += change;
      if (transposed) map = map.t();
      const std::vector<cv::KeyPoint> found = findCandidates(map, 1.0, MaximumTest::single);
      EXPECT_EQ(found.size(), change == 0.0f ? 0u : 1u);
    }
}

// Angles are curvatures over the largest one, which may be small.
TEST(CandidateSearch, flatPeaks) {
  cv::Mat map;
  cv::GaussianBlur(cornerScene(120, 150, 3), map, {}, 2);
  map.convertTo(map, CV_32F, 1e-6);
  const std::vector<cv::KeyPoint> expected = literal::candidates(map, "SingleMaximum7x7Patch");
  EXPECT_GT(expected.size(), 5u);
  EXPECT_TRUE(same(toFeatureMatrix(findCandidates(map, 1.0, MaximumTest::single)), toFeatureMatrix(expected)));
}

// Neighbours that differ by a unit in the last place, of which scaling may make one value.
TEST(CandidateSearch, scalingMayLevelNeighbours) {
  cv::RNG random(5);
  std::size_t found = 0;
  for (int run = 0; run < 60; ++run) {
    const double factor = random.uniform(0.5, 2.0);
    cv::Mat_<float> map(60, 60), scaled(60, 60);
    for (float& value : map) value = static_cast<float>(random.uniform(0.0, 0.3));
    for (int y = 4; y < 60; y += 8)
      for (int x = 4; x < 60; x += 8)
        for (int i = 0; i < 3; ++i) {
          float& value = map(y + random.uniform(0, 2), x + random.uniform(0, 2));
          value = 0.7f;
          for (int ulp = random.uniform(0, 3); ulp > 0; --ulp) value = std::nextafter(value, 1.0f);
        }
    for (int y = 0; y < map.rows; ++y) scaleRow(map[y], scaled[y], map.cols, factor);
    for (const char* name : {"SingleMaximum7x7Patch", "weighted"}) {
      const MaximumTest test = maximumTest(name == std::string("weighted") ? L"weighted" : L"SingleMaximum7x7Patch");
      const std::vector<cv::KeyPoint> expected = literal::candidates(scaled, name);
      const std::vector<cv::KeyPoint> candidates = findCandidates(map, factor, test);
      EXPECT_TRUE(same(toFeatureMatrix(candidates), toFeatureMatrix(expected))) << name << ' ' << factor;
      found += expected.size();
    }
  }
  EXPECT_GT(found, 1000u);
}

}  // namespace
}  // namespace MirelAlgorithms
