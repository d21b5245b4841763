/// A frame with its features and the grid they are spread over.
#pragma once

#include "tracking/FrameFeatures.h"

#include <opencv2/core/mat.hpp>

namespace mirel {

/// Circles as wide as the features, coloured by response; each cell of a grid of `cells` x `cells` shows its count.
/// 0 cells: no grid.
cv::Mat drawFeatures(const FrameFeatures& features, int cells);

}  // namespace mirel
