/// Images with corners, for tests of corner detection.
#pragma once

#include <opencv2/imgproc.hpp>

/// Overlapping boxes, discs and lines on a slope of grey, with some noise.
inline cv::Mat cornerScene(int rows, int cols, std::uint64_t seed) {
  cv::RNG random(seed);
  cv::Mat image(rows, cols, CV_8UC1);
  for (int y = 0; y < rows; ++y)
    for (int x = 0; x < cols; ++x) image.at<uchar>(y, x) = static_cast<uchar>(60 + (x + 2 * y) % 120);
  for (int i = 0; i < rows * cols / 300; ++i) {
    const int x = random.uniform(0, cols), y = random.uniform(0, rows);
    const int size = random.uniform(2, 20), grey = random.uniform(0, 256);
    const cv::Point at(x, y);
    if (i % 3 == 0) cv::rectangle(image, cv::Rect(at.x, at.y, size, size), grey, cv::FILLED);
    if (i % 3 == 1) cv::circle(image, at, size / 2, grey, cv::FILLED);
    if (i % 3 == 2) cv::line(image, at, at + cv::Point(size, size / 2), grey, 2);
  }
  cv::Mat noise(image.size(), CV_8UC1);
  random.fill(noise, cv::RNG::UNIFORM, 0, 6);
  return image + noise;
}

/// Stripes of two pixels, upright above and level below: every gradient is the largest there is.
inline cv::Mat stripes(int rows, int cols) {
  cv::Mat image(rows, cols, CV_8UC1);
  for (int y = 0; y < rows; ++y)
    for (int x = 0; x < cols; ++x) image.at<uchar>(y, x) = (2 * y < rows ? x : y) / 2 % 2 == 0 ? 0 : 255;
  return image;
}

/// Only black and white, every pixel by chance.
inline cv::Mat harshNoise(int rows, int cols, std::uint64_t seed) {
  cv::Mat image(rows, cols, CV_8UC1);
  cv::RNG(seed).fill(image, cv::RNG::UNIFORM, 0, 2);
  return image * 255;
}
