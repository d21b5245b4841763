/// Score of points seen by a camera.
#pragma once

#include <MirelAlgorithms/Host.h>

#include <vector>

namespace MirelAlgorithms {

/// A pyramid along +z, without its sides.
struct ViewLimits {
  double near_, far_;         ///< range of z
  double tangentX, tangentY;  ///< |x / z| and |y / z| lie below
};

/// Sum of 1 / |q| over the points p, in their order, whose q = transform * p lies inside the limits.
double latticeScore(const std::vector<Vec3d<double>>& points, const Mat4d& transform, const ViewLimits& limits);

}  // namespace MirelAlgorithms
