/// Rows of a point list by the cells of a grid.
#pragma once

#include <cstddef>
#include <opencv2/core/mat.hpp>
#include <span>
#include <vector>

namespace MirelAlgorithms {

/// Rows of a list, by cell: in x, then in y, and ascending within a cell.
class GridCells {
 public:
  /// Rows whose cell is not a number are left out: each is alone in its cell. See `smoothSparse3D` for the grid.
  ///
  /// @param points  CV_32FC1, not empty, columns 0 and 1 are x and y
  GridCells(const cv::Mat& points, int mostCells);

  std::size_t size() const { return ends_.size(); }

  std::span<const int> rows(std::size_t cell) const {
    const std::size_t begin = cell == 0 ? 0 : ends_[cell - 1];
    return {rows_.data() + begin, ends_[cell] - begin};
  }

 private:
  std::vector<int> rows_;
  std::vector<std::size_t> ends_;
};

}  // namespace MirelAlgorithms
