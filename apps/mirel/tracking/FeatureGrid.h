/// The cells that features are spread over, and what each of them got.
#pragma once

#include "tracking/FrameFeatures.h"

#include <cstdint>

namespace mirel {

struct GridCell {
  cv::Rect2f area;  ///< pixels; pixel centres have whole numbers
  int found = 0;    ///< features that the detector found in it
  int kept = 0;     ///< those of them that its quota let through
};

/// The grid as detection really uses it. The fixed-point pipeline divides the whole image; the other detectors have
/// cells of whole pixels, and what is left over at the right and bottom belongs to none.
struct FeatureGrid {
  int cellsPerSide = 0;         ///< FBMnCells
  std::int64_t quota = 0;       ///< most features of one cell
  int columns = 0, rows = 0;    ///< of cells; more than `cellsPerSide` where the remainder holds whole cells
  std::vector<GridCell> cells;  ///< row by row; none for grids of more than 100 cells per side
  int found = 0;                ///< features of the whole image before quotas
};

/// Detects once more, with a budget that cuts nothing, and counts per cell.
///
/// @param features  of `extractFeatures` with the same settings
FeatureGrid countInCells(const FrameFeatures& features, const Settings& settings);

}  // namespace mirel
