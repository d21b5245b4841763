/// How far apart two surfaces are.
#pragma once

#include "meshes/Surface.h"

namespace mirel {

/// Of the points of one surface from another one, in the unit of the coordinates.
struct SurfaceDistance {
  double mean = 0, rms = 0, largest = 0;
};

struct MeshDistance {
  static constexpr int samples = 100'000;  ///< on each of the surfaces

  SurfaceDistance there;  ///< from the first surface to the nearest points of the second
  SurfaceDistance back;   ///< from the second to the first

  /// Of both together.
  SurfaceDistance both() const;
};

/// Distance between two surfaces of one triangle or more, at points that are spread over the triangles by area and
/// chosen by a fixed seed: the same everywhere. Time about n log n in the triangles.
MeshDistance distanceBetween(const Surface& first, const Surface& second);

}  // namespace mirel
