/// Points that were kept and those that were not.
#pragma once

#include "smoothing/PointChoice.h"

#include <opencv2/core/mat.hpp>

namespace mirel {

/// Kept points over dropped ones, which are coloured by the reason; over the grid's cells where there is a grid.
struct PointPicture {
  cv::Mat sheet;   ///< under a title
  cv::Mat narrow;  ///< the plot and its legend alone, for narrow screens
};

PointPicture drawPoints(const PointChoice& choice);

}  // namespace mirel
