/// Why points were not kept by `smoothSparse3D`.
#pragma once

#include <MirelAlgorithms/Host.h>

#include <opencv2/core/mat.hpp>
#include <optional>
#include <vector>

namespace mirel {

enum class Fate {
  kept,
  shortList,     ///< the list has fewer rows than are taken
  lonely,        ///< too few neighbours
  offMedian,     ///< value far from the neighbours' median
  smallCell,     ///< too few points in the cell
  wideCell,      ///< the cell's points spread too far
  unevenCell,    ///< they spread farther in one coordinate than in the other
  aboveMean,     ///< value above the mean of a good cell
  alternate,     ///< the other one of every two in a good cell
  betweenSteps,  ///< not one of every so many rows
  unexplained    ///< the documented rules do not say why
};

/// What pictures, tables and JSON call it.
struct FateName {
  const char *key, *text;
};
FateName nameOf(Fate fate);

/// The grid that points are put into: corners of cells lie at origin + n * size.
struct CellGrid {
  float x, y, width, height;

  /// Whether there are cells of points at all; without, every point is alone.
  bool isThere() const;
};

/// See `smoothSparse3D`.
CellGrid gridOver(const cv::Mat& points, int mostCells);

/// The settings of `smoothSparse3D`, and what it was given and gave back.
struct PointRun {
  int mode = 0, mostPoints = 0, leastPoints = 0;
  MirelAlgorithms::SmartPtr<MirelAlgorithms::AttrContainer> settings;
  cv::Mat points;         ///< CV_32FC1, five columns
  std::vector<int> kept;  ///< rows in the order given back

  int method() const { return mode & 0xF000; }
  bool hasGrid() const { return method() == 0x3000 || method() == 0x4000; }
};

/// Rows that `smoothSparse3D` gives back, in its order; `enough` is what it returns.
std::vector<int> keptRows(const cv::Mat& points,
                          const MirelAlgorithms::SmartPtr<MirelAlgorithms::AttrContainer>& settings, bool& enough);

/// What became of each row. A reason is told only where the documented rules, applied once more, keep exactly the rows
/// that were kept; rows for which they say otherwise are `unexplained`.
std::vector<Fate> fatesOf(const PointRun& run);

/// Reasons that the method of a run can give.
std::vector<Fate> possibleReasons(const PointRun& run);

}  // namespace mirel
