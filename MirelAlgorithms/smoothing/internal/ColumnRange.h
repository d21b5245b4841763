/// Least and greatest value in a column.
#pragma once

#include <algorithm>
#include <limits>
#include <opencv2/core/mat.hpp>

namespace MirelAlgorithms {

struct Range {
  float least, most;

  float extent() const { return most - least; }
};

/// NaN is passed over; a column of nothing else has the range from infinity to minus infinity.
///
/// @param points  CV_32FC1
inline Range columnRange(const cv::Mat& points, int column) {
  constexpr float infinity = std::numeric_limits<float>::infinity();
  Range range = {infinity, -infinity};
  for (int i = 0; i < points.rows; ++i) {
    const float value = points.ptr<float>(i)[column];
    range.least = std::min(range.least, value);
    range.most = std::max(range.most, value);
  }
  return range;
}

}  // namespace MirelAlgorithms
