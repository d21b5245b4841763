/// The nearest descriptors of one set for each of another, by Hamming distance, in both directions at once.
#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

namespace MirelAlgorithms {

/// The nearest row of the other set; the first of those at the same distance.
struct NearestRow {
  int row = -1;  ///< -1: the other set is empty
  int distance = -1;
  int nextDistance = -1;  ///< of the next nearest row, equal for a tie; -1: the other set has one row
};

struct NearestRows {
  std::vector<NearestRow> of1, of2;  ///< for each row of the first and of the second set
};

/// Compares every row with every row of the other set. The results are those of OpenCV's brute-force matcher.
///
/// `std::invalid_argument`, in the name of `function`, refuses anything but CV_8UC1, different widths, more than 2047
/// columns, and 2^18 rows or more.
///
/// @param pairs  false: Hamming distance; true: the number of pairs of bits that differ
NearestRows findNearestRows(const char* function, const cv::Mat& descriptors1, const cv::Mat& descriptors2, bool pairs);

}  // namespace MirelAlgorithms
