/// A depth image before and after smoothing.
#pragma once

#include "smoothing/DepthChange.h"

#include <opencv2/core/mat.hpp>

namespace mirel {

/// Before, after and difference, each with a colour bar in raw units and with hatched holes.
struct DepthPicture {
  cv::Mat sheet;    ///< side by side, under a title
  cv::Mat stacked;  ///< below each other, for narrow screens
};

DepthPicture drawDepth(const DepthChange& change);

}  // namespace mirel
