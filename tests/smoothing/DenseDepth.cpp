#include <MirelAlgorithms/smoothing/DenseDepth.h>
#include <gtest/gtest.h>
#include <smoothing/DepthWindow.h>
#include <support/Matrices.h>
#include <support/SettingsOf.h>

#include <algorithm>
#include <opencv2/photo.hpp>
#include <vector>

using namespace MirelAlgorithms;

namespace {

// Either a slope with noise or only the extremes of the type; every `holes`-th pixel or so is 0. A view.
cv::Mat depthImage(cv::Size size, bool harsh, int holes, std::uint64_t seed) {
  cv::RNG random(seed);
  cv::Mat all(size + cv::Size(3, 2), CV_16UC1);
  for (int y = 0; y < all.rows; ++y)
    for (int x = 0; x < all.cols; ++x) {
      const int slope = 1000 + 3 * x + 5 * y + random.uniform(0, 9), extreme = random.uniform(0, 2) == 0 ? 1 : 65535;
      const bool hole = holes > 0 && random.uniform(0, holes) == 0;
      all.at<ushort>(y, x) = static_cast<ushort>(hole ? 0 : harsh ? extreme : slope);
    }
  return all(cv::Rect({2, 1}, size));
}

cv::Mat literal(const cv::Mat& in, int mode, int width) {
  cv::Mat out(in.size(), CV_16UC1);
  if (mode == 1) cv::fastNlMeansDenoising(in, out, std::vector<float>{3.0f}, width, 3 * width, cv::NORM_L1);
  for (int y = 0; y < in.rows; ++y)
    for (int x = 0; x < in.cols; ++x) {
      const auto pixels = window(in, x, y, width);  // the nearest pixel of the image lies in the window too
      if (mode != 1) out.at<ushort>(y, x) = pixels[pixels.size() / 2];
      if (pixels.front() == 0) out.at<ushort>(y, x) = 0;
    }
  return out;
}

TEST(DenseDepth, EqualsTheLiteralSteps) {
  std::uint64_t seed = 1;
  for (const cv::Size size : {cv::Size(61, 40), cv::Size(16, 33), cv::Size(3, 2), cv::Size(9, 1), cv::Size(1, 1)})
    for (const bool harsh : {false, true})
      for (const int holes : {0, 7, 100})
        for (const auto& [mode, width] : {std::pair(0, 1), {0, 3}, {2, 5}, {-1, 5}, {1, 1}, {1, 3}, {1, 7}}) {
          const cv::Mat view = depthImage(size, harsh, holes, seed++);
          cv::Mat image = mode == 1 ? view.clone() : view;  // non-local means looks around views
          const cv::Mat wanted = literal(image, mode, width);
          cv::Mat out;
          const auto settings = settingsOf({{L"smoothDenseMode", mode}, {L"smoothDenseRadius", width}});
          ASSERT_TRUE(smoothDenseZ16(image, out, settings));
          EXPECT_TRUE(same(out, wanted)) << size << " mode " << mode << " window " << width;
          ASSERT_TRUE(smoothDenseZ16(image, image, settings));
          EXPECT_TRUE(same(image, wanted)) << "in place, " << size << " mode " << mode << " window " << width;
        }
}

}  // namespace
