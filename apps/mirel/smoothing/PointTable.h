/// Tables of measured points.
#pragma once

#include "input/CsvTable.h"
#include "output/OutputFolder.h"

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

namespace mirel {

/// Points of a table: position in the image, then in space. See docs/point-files.md.
struct PointTable {
  const CsvTable& table;
  std::vector<std::size_t> columns;  ///< for x_px, y_px, x_m, y_m, z_m
  cv::Mat points;                    ///< these five of every row, CV_32FC1

  /// @param list  heads or numbers of the five columns; empty: known heads, or the first five in order
  ///
  /// Throws `UsageError` for missing columns and for cells that are no numbers from -1e9 to 1e9.
  PointTable(const CsvTable& csv, const std::string& list);

  /// Which columns were taken.
  std::string columnsText() const;

  /// Writes some of the rows with all their cells as they are, under heads with units.
  ///
  /// @param shown  name of the file in messages
  void write(const StagedFile& file, const std::string& shown, const std::vector<int>& rows) const;

 private:
  std::vector<std::string> headsWithUnits() const;
};

}  // namespace mirel
