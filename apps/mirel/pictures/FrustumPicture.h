/// Views of cameras as pyramids.
#pragma once

#include "views/ViewOverlaps.h"

#include <opencv2/core/mat.hpp>

namespace mirel {

/// The pyramids whose overlaps were asked for, from above and from the side: a colour per view, dark lines between the
/// positions of views that overlap.
cv::Mat drawViews(const ViewOverlaps& result);

}  // namespace mirel
