/// Voxels coloured by their scores.
#pragma once

#include "views/SeenVoxels.h"

#include <opencv2/core/mat.hpp>

namespace mirel {

/// The voxels from above and from the side, the highest score in front, the best regions numbered; the way of the
/// poses.
cv::Mat drawVoxels(const SeenVoxels& result);

}  // namespace mirel
