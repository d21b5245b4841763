/// ORB descriptors by the formula, one pixel after the other; the library must give the same bits.
#pragma once

#include <MirelAlgorithms/features/MirelScalingORB.h>
#include <MirelAlgorithms/features/internal/OrbPattern.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace literal {

using MirelAlgorithms::OrbPair;
using MirelAlgorithms::orbPattern;

/// A row of 32 bytes, from the pixels that `pixel(x, y)` gives for the places of the pattern.
template <class Pixel>
cv::Mat descriptor(const Pixel& pixel) {
  cv::Mat row = cv::Mat::zeros(1, 32, CV_8UC1);
  for (int t = 0; t < 256; ++t) {
    const OrbPair& p = orbPattern[t];
    if (pixel(p.x1, p.y1) < pixel(p.x2, p.y2)) row.data[t / 8] |= 1 << t % 8;
  }
  return row;
}

inline cv::Mat patchDescriptor(const cv::Mat& patch) {
  return descriptor([&](int x, int y) {
    const int element = patch.rows * patch.cols / 2 + y * patch.cols + x;
    return patch.at<uchar>(element / patch.cols, element % patch.cols);
  });
}

inline cv::Mat descriptors(const cv::Mat& image, const std::vector<cv::KeyPoint>& keyPoints) {
  cv::Mat all(0, 32, CV_8UC1);
  for (const cv::KeyPoint& k : keyPoints) {
    const float size = std::clamp(k.size, -1e30f, 1e30f);
    const float a = float(std::cos(-double(k.angle))) * size, b = float(std::sin(-double(k.angle))) * size;
    all.push_back(descriptor([&](int x, int y) {
      const double column = std::rint(k.pt.x) + double(std::rint(a * x - b * y));
      const double row = std::rint(k.pt.y) + double(std::rint(a * y + b * x));
      return image.at<uchar>(int(std::clamp(row, 0.0, image.rows - 1.0)),
                             int(std::clamp(column, 0.0, image.cols - 1.0)));
    }));
  }
  return all;
}

}  // namespace literal
