#include <MirelAlgorithms/features/internal/MaximumTest.h>
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <stdexcept>

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

TEST(WeightedMaximum, needsAMarginThatGrowsWithTheDistance) {
  const char* const margins5 =
      "22222"
      "21101"
      "21001"
      "21001"
      "21111";
  const char* const margins7 =
      "3333333"
      "3222222"
      "3211012"
      "3210012"
      "3210012"
      "3211112"
      "3222222";
  for (const int size : {5, 7}) {
    const char* margin = size == 5 ? margins5 : margins7;
    const double epsilon = 1.0 / 4096.0;
    for (int dy = -(size / 2); dy <= size / 2; ++dy)
      for (int dx = -(size / 2); dx <= size / 2; ++dx, ++margin) {
        if (dy == 0 && dx == 0) continue;
        Peak peak(size);
        for (int m = 0; m <= 4; ++m) {
          peak.at(dy, dx) = static_cast<float>(1.0 - m * epsilon);
          EXPECT_EQ(peak.weighted(epsilon), m >= *margin - '0') << size << ": " << dy << ' ' << dx << ' ' << m;
        }
      }
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
