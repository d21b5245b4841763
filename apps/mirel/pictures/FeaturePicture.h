/// A frame with its features and the cells they are spread over.
#pragma once

#include "tracking/FeatureGrid.h"

#include <opencv2/core/mat.hpp>

namespace mirel {

/// Circles as wide as the features, coloured by response; grey ones have no descriptor. The grid's cells show how many
/// features were kept, of which quota, and how many were found; what belongs to no cell is shaded.
cv::Mat drawFeatures(const FrameFeatures& features, const FeatureGrid& grid);

}  // namespace mirel
