#include <MirelAlgorithms/features/internal/ResponseOrder.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/core.hpp>

namespace MirelAlgorithms {
namespace {

TEST(ResponseOrder, agreesWithAComparisonSort) {
  constexpr float infinity = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  const std::vector<float> special = {0.0f, -0.0f, 1.0f, -1.0f, infinity, -infinity, nan, -nan, 1e-42f, -1e-42f};
  cv::RNG random(7);
  for (const int count : {0, 1, 2, 50, 3000}) {
    std::vector<cv::KeyPoint> keyPoints;
    for (int i = 0; i < count; ++i) {
      const bool plain = random.uniform(0, 3) != 0;
      const float response = plain ? static_cast<float>(random.gaussian(1.0))
                                   : special[random.uniform(0, static_cast<int>(special.size()))];
      const float y = static_cast<float>(random.uniform(0, 40));
      keyPoints.emplace_back(random.uniform(0.0f, 40.0f), y, 15.0f, static_cast<float>(i), response);
    }
    std::vector<cv::KeyPoint> expected = keyPoints;
    std::sort(expected.begin(), expected.end(), [](const cv::KeyPoint& a, const cv::KeyPoint& b) {
      const float ra = std::isnan(a.response) ? -HUGE_VALF : a.response;
      const float rb = std::isnan(b.response) ? -HUGE_VALF : b.response;
      if (ra != rb) return ra > rb;
      return a.pt.y != b.pt.y ? a.pt.y < b.pt.y : a.pt.x < b.pt.x;
    });
    const std::vector<cv::KeyPoint> sorted = strongestFirst(keyPoints);
    ASSERT_EQ(sorted.size(), expected.size());
    for (int i = 0; i < count; ++i) ASSERT_EQ(sorted[i].angle, expected[i].angle) << i;  // its number
  }
}

}  // namespace
}  // namespace MirelAlgorithms
