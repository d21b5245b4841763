/// Rows of a point list by the cells of a grid.
#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Rows in one cell, ascending.
using CellRows = std::vector<int>;

/// The rows in cells with at least so many, by cell: in x, then in y. See `smoothSparse3D` for the grid.
///
/// @param points  CV_32FC1, columns 0 and 1 are x and y
std::vector<CellRows> rowsByCell(const cv::Mat& points, int mostCells, std::size_t fewestRows);

}  // namespace MirelAlgorithms
