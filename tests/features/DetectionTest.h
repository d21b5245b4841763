/// What tests of detection share.
#pragma once

#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Overlapping boxes and discs: corners for some detectors, regions for others.
inline cv::Mat scene(int rows, int cols, std::uint64_t seed) {
  cv::Mat image(rows, cols, CV_8UC1, cv::Scalar(128));
  cv::RNG random(seed);
  for (int i = 0; i < rows * cols / 150; ++i) {
    const cv::Point at(random.uniform(0, cols), random.uniform(0, rows));
    const int size = random.uniform(3, 15), grey = random.uniform(0, 256);
    if (i % 2 == 0)
      cv::rectangle(image, cv::Rect(at.x, at.y, size, size), grey, cv::FILLED);
    else
      cv::circle(image, at, size / 2, grey, cv::FILLED);
  }
  return image;
}

/// The detector on the whole image, with a mask of the cell.
inline std::vector<cv::KeyPoint> detectMasked(cv::Feature2D& detector, const cv::Mat& image, const cv::Rect& cell) {
  cv::Mat mask(image.size(), CV_8UC1, cv::Scalar(0));
  mask(cell) = 255;
  std::vector<cv::KeyPoint> keyPoints;
  detector.detect(image, keyPoints, mask);
  return keyPoints;
}

}  // namespace MirelAlgorithms
