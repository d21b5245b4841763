#include <MirelAlgorithms/features/internal/MaximumTest.h>
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <stdexcept>

#include "LiteralCorners.h"
#include "support/ThrownText.h"

namespace MirelAlgorithms {
namespace {

/// A map with one value in a plain; what one neighbour may be is then probed.
struct Peak {
  explicit Peak(int patchSize) : size(patchSize), map(9, 10, CV_32FC1, cv::Scalar(0.0)) { map.at<float>(4, 5) = 1.0f; }

  float& at(int dy, int dx) { return map.at<float>(4 + dy, 5 + dx); }
  bool single() const { return checkLocalMaximumFPGA(map, 5, 4, size); }
  bool weighted(double epsilon) const { return checkPatchFPGA(map, 5, 4, size, epsilon); }

  int size;
  cv::Mat map;
};

TEST(SingleMaximum, isStrictlyAboveEveryOtherValueOfTheWindow) {
  for (const int size : {5, 7}) {
    Peak peak(size);
    EXPECT_TRUE(peak.single());
    for (int dy = -4; dy <= 4; ++dy)
      for (int dx = -4; dx <= 4; ++dx) {
        if (dy == 0 && dx == 0) continue;
        const bool inside = std::abs(dy) <= size / 2 && std::abs(dx) <= size / 2;
        for (const float value : {std::nextafter(1.0f, 0.0f), 1.0f, 2.0f}) {
          peak.at(dy, dx) = value;
          EXPECT_EQ(peak.single(), value < 1.0f || !inside) << dy << ' ' << dx << ' ' << value;
        }
        peak.at(dy, dx) = 0.0f;
      }
  }
}

// The weights of the window of 5 are those in the middle of the window of 7.
TEST(WeightedMaximum, needsAMarginThatGrowsWithTheDistance) {
  constexpr double epsilon = 1.0 / 4096.0;
  for (const int size : {5, 7})
    for (int dy = -(size / 2); dy <= size / 2; ++dy)
      for (int dx = -(size / 2); dx <= size / 2; ++dx) {
        if (dy == 0 && dx == 0) continue;
        Peak peak(size);
        for (int margin = 0; margin <= 4; ++margin) {
          peak.at(dy, dx) = static_cast<float>(1.0 - margin * epsilon);
          EXPECT_EQ(peak.weighted(epsilon), margin >= literal::weights[dy + 3][dx + 3])
              << size << ": " << dy << ' ' << dx;
        }
      }
}

TEST(WeightedMaximum, ofADetectorRun) {
  Peak peak(7);
  for (const double more : {-1.0, 0.0}) {
    peak.at(-3, 3) = static_cast<float>(1.0 - (3 + more / 256) / 4096.0);
    EXPECT_EQ(isMaximum(peak.map, 5, 4, MaximumTest::weighted), more == 0.0);
  }
}

TEST(WeightedMaximum, refusesOtherTypes) {
  const cv::Mat map(9, 9, CV_64FC1, cv::Scalar(0.0));
  EXPECT_EQ(thrownText<std::invalid_argument>([&] { checkPatchFPGA(map, 4, 4, 7, 0.1); }),
            "checkPatchFPGA(..): input matrix must be of type CV_32F");
}

TEST(RingTest, comparesWithMeanAndDeviationOfTheRing) {
  for (const int size : {5, 7}) {
    // A ring of zeros and ones in equal numbers: mean 1/2, deviation 1/2, threshold 2.
    const int half = size / 2;
    cv::Mat map(9, 10, CV_32FC1, cv::Scalar(0.0));
    for (int i = -half; i < half; ++i) map.at<float>(4 - half, 5 + i) = map.at<float>(4 + half, 5 - i) = 1.0f;
    const auto passes = [&](float centre) {
      map.at<float>(4, 5) = centre;
      return checkRingFPGA(map, 5, 4, size);
    };
    EXPECT_FALSE(passes(1.99f));
    EXPECT_FALSE(passes(2.0f));
    EXPECT_TRUE(passes(2.01f));
    map = -1.0f;
    EXPECT_FALSE(passes(-0.5f));  // above all others, but negative
    EXPECT_TRUE(passes(0.0f));
  }
}

}  // namespace
}  // namespace MirelAlgorithms
