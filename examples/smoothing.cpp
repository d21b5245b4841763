// A noisy depth image with a hole is smoothed; points measured on a plane lose those that are far off.
#include <MirelAlgorithms/MirelAlgorithms.h>

#include <cmath>
#include <cstdio>
#include <opencv2/core.hpp>

using namespace MirelAlgorithms;

namespace {

constexpr int kDepth = 1000;  // of a wall, in millimetres

// A wall with noise of 4 mm, and a hole of 10 x 10 pixels where nothing was measured.
cv::Mat wall() {
  cv::RNG random(1);
  cv::Mat depth(60, 80, CV_16UC1);
  for (auto pixel = depth.begin<ushort>(); pixel != depth.end<ushort>(); ++pixel)
    *pixel = static_cast<ushort>(kDepth + std::lround(random.gaussian(4.0)));
  depth(cv::Rect(30, 20, 10, 10)) = 0;
  return depth;
}

void print(const char* what, const cv::Mat& depth) {
  double sum = 0.0;
  for (auto pixel = depth.begin<ushort>(); pixel != depth.end<ushort>(); ++pixel)
    if (*pixel) sum += std::pow(*pixel - kDepth, 2.0);
  const int valid = cv::countNonZero(depth);
  std::printf("%s: %d pixels with depth, noise %.2f mm\n", what, valid, std::sqrt(sum / valid));
}

// Rows of x, y (pixels) and x, y, z (metres): a plane at 1 m, every 20th point half a metre behind it.
cv::Mat points() {
  cv::Mat rows(400, 5, CV_32FC1);
  for (int i = 0; i < rows.rows; ++i) {
    const auto u = static_cast<float>(i % 20), v = static_cast<float>(i / 20);
    const float row[5] = {10.0f * u, 10.0f * v, 0.02f * u, 0.02f * v, i % 20 == 7 ? 1.5f : 1.0f};
    for (int column = 0; column < 5; ++column) rows.at<float>(i, column) = row[column];
  }
  return rows;
}

}  // namespace

int main() {
  const cv::Mat depth = wall();
  cv::Mat smoothed;
  const SmartPtr<AttrContainer> settings(new AttrContainer());
  settings->set(L"smoothDenseRadius", 5);
  if (!smoothDenseZ16(depth, smoothed, settings)) return 1;  // another type of image, or a window of even width
  print("measured", depth);
  print("smoothed", smoothed);

  const cv::Mat measured = points();
  cv::Mat kept;
  settings->set(L"smoothSparseMode", 0x2000);               // compare with the median of the neighbours
  if (!smoothSparse3D(measured, kept, settings)) return 1;  // fewer points left than wanted
  std::printf("%d of %d points kept\n", kept.rows, measured.rows);
}
