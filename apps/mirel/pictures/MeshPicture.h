/// A mesh before and after simplification.
#pragma once

#include "meshes/MeshChange.h"

#include <opencv2/core/mat.hpp>

namespace mirel {

/// Both meshes from the same side: whole, and their triangles near the middle. Open borders are red.
struct MeshPicture {
  cv::Mat sheet;   ///< before and after side by side, under a title
  cv::Mat narrow;  ///< all below each other, for narrow screens
};

MeshPicture drawMeshes(const Surface& before, const Surface& after, const MeshChange& change);

}  // namespace mirel
