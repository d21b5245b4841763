/// Matrices that tests make and compare.
#pragma once

#include <cstdint>
#include <cstring>
#include <opencv2/core.hpp>

namespace MirelAlgorithms {

inline cv::Mat noise(int rows, int cols, std::uint64_t seed) {
  cv::Mat image(rows, cols, CV_8UC1);
  cv::RNG(seed).fill(image, cv::RNG::UNIFORM, 0, 256);
  return image;
}

/// A copy that is a view of a larger matrix, whose rows begin at odd addresses where elements are bytes.
inline cv::Mat oddView(const cv::Mat& matrix) {
  cv::Mat all(matrix.rows + 2, matrix.cols + 4, matrix.type(), cv::Scalar(3));
  cv::Mat view = all(cv::Rect(1, 1, matrix.cols, matrix.rows));
  matrix.copyTo(view);
  return view;
}

/// The same bits in matrices of the same type and size, or two empty ones.
inline bool same(const cv::Mat& a, const cv::Mat& b) {
  if (a.empty() || b.empty()) return a.empty() && b.empty();
  if (a.size() != b.size() || a.type() != b.type()) return false;
  for (int i = 0; i < a.rows; ++i)
    if (std::memcmp(a.ptr(i), b.ptr(i), a.cols * a.elemSize()) != 0) return false;
  return true;
}

}  // namespace MirelAlgorithms
