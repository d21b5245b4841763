/// The strongest candidates of an image, spread over a grid of cells.
#pragma once

#include <cstdint>
#include <opencv2/core/types.hpp>
#include <vector>

namespace MirelAlgorithms {

/// The image and the cells that it is cut into, `cells` on each side.
struct CellGrid {
  int cells;
  int rows;
  int cols;
};

/// Walks the candidates, strongest first, and takes each whose cell holds fewer than budget / cells / cells (integer
/// divisions), and whose response reaches `threshold` or whose cell holds at most a third of that. At most `budget`.
std::vector<cv::KeyPoint> selectPerCell(const std::vector<cv::KeyPoint>& strongestFirst, const CellGrid& grid,
                                        std::int64_t budget, double threshold);

/// Threshold made from the candidates: the mean response of the strongest `budget`, spread over the cells, and then
/// that of half as many among those that reach the first mean. 0 when there are none.
double automaticThreshold(const std::vector<cv::KeyPoint>& strongestFirst, const CellGrid& grid, std::int64_t budget);

}  // namespace MirelAlgorithms
