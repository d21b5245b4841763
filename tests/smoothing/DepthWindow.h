/// What smoothing of depth images looks at.
#pragma once

#include <algorithm>
#include <opencv2/core.hpp>
#include <vector>

namespace MirelAlgorithms {

/// The pixels of the window around a pixel; outside, the nearest pixel of the image. Sorted.
inline std::vector<ushort> window(const cv::Mat& image, int x, int y, int width) {
  std::vector<ushort> pixels;
  for (int v = y - width / 2; v <= y + width / 2; ++v)
    for (int u = x - width / 2; u <= x + width / 2; ++u)
      pixels.push_back(image.at<ushort>(std::clamp(v, 0, image.rows - 1), std::clamp(u, 0, image.cols - 1)));
  std::sort(pixels.begin(), pixels.end());
  return pixels;
}

}  // namespace MirelAlgorithms
