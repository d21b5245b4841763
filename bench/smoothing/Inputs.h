/// Depth images and point lists to measure smoothing on, the same in every run.
#pragma once

#include <cmath>
#include <opencv2/imgproc.hpp>

namespace bench {

/// Millimetres of a wavy wall with noise. With holes, a twentieth or so is 0: patches with ragged borders, and single
/// pixels.
inline cv::Mat depthImage(cv::Size size, bool holes) {
  cv::RNG random(20240301);
  cv::Mat depth(size, CV_16UC1), patches(size, CV_32FC1);
  random.fill(patches, cv::RNG::UNIFORM, -1.0, 1.0);
  cv::GaussianBlur(patches, patches, cv::Size(), 6.0);
  cv::normalize(patches, patches, 0.0, 1.0, cv::NORM_MINMAX);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      const double wall = 1500.0 + 200.0 * std::sin(x / 60.0) + y / 4.0 + random.gaussian(4.0);
      const bool hole = patches.at<float>(y, x) > 0.75f || random.uniform(0, 500) == 0;
      depth.at<ushort>(y, x) = holes && hole ? ushort{0} : cv::saturate_cast<ushort>(wall);
    }
  return depth;
}

/// A wavy surface of 3 x 2 m, seen at random places: place in a picture of 6 x 4, position, and value with noise, a
/// hundredth of them outliers.
inline cv::Mat pointList(int rows) {
  cv::RNG random(20240302);
  cv::Mat points(rows, 5, CV_32FC1);
  for (int i = 0; i < rows; ++i) {
    float* row = points.ptr<float>(i);
    row[0] = random.uniform(0.0f, 6.0f);
    row[1] = random.uniform(0.0f, 4.0f);
    row[2] = row[0] / 2.0f;
    row[3] = row[1] / 2.0f;
    row[4] = 0.2f * std::sin(row[0]) + static_cast<float>(random.gaussian(0.02)) +
             (random.uniform(0, 100) == 0 ? 0.3f : 0.0f);
  }
  return points;
}

}  // namespace bench
