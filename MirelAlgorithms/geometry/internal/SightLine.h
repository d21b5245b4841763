/// Walk through the voxels along a sight line.
#pragma once

#include <MirelAlgorithms/geometry/internal/VoxelIndex.h>

#include <Eigen/Core>

namespace MirelAlgorithms {

/// Calls `visit(key)` for the voxels that a line crosses on its way from `from` to `to`, in order, as far as they lie
/// in the box (Amanatides and Woo, "A fast voxel traversal algorithm for ray tracing", Eurographics 1987). Crossings
/// are measured in parts of the line. Keys are those of the position, which grows by whole steps.
///
/// @param grid   cell size, origin and rule of keys
/// @param size   step; when it is not above 0 the line ends in its first voxel
/// @param first  key of `from`
template <class Grid, class Visit>
void walkSightLine(const Grid& grid, double size, const VoxelBox& box, const VoxelKey& first,
                   const Eigen::Vector3d& from, const Eigen::Vector3d& to, const Visit& visit) {
  int key[3] = {first.x, first.y, first.z};
  const int least[3] = {box.least.x, box.least.y, box.least.z}, most[3] = {box.most.x, box.most.y, box.most.z};
  Eigen::Vector3d position = from;
  double step[3], crossing[3], increment[3];
  constexpr double never = 2.0;  // beyond the end of the line
  for (int axis = 0; axis < 3; ++axis) {
    const double d = to[axis] - from[axis];
    const bool forward = d >= 0.0;
    if (forward ? key[axis] > most[axis] : key[axis] < least[axis]) return;  // moves away from the box
    step[axis] = forward ? size : -size;
    crossing[axis] = d == 0.0  ? never
                     : forward ? ((key[axis] + 1.0) * size - from[axis]) / d
                               : (from[axis] - key[axis] * size) / -d;
    increment[axis] = d == 0.0 ? 0.0 : size / (forward ? d : -d);
  }
  const auto inside = [&](int axis) { return least[axis] <= key[axis] && key[axis] <= most[axis]; };
  bool inBox = inside(0) && inside(1) && inside(2);
  if (inBox) visit(first);
  if (!(size > 0.0)) return;
  for (;;) {
    const int axis = crossing[0] < crossing[1] && crossing[0] < crossing[2] ? 0 : crossing[1] < crossing[2] ? 1 : 2;
    if (!(crossing[axis] < 1.0)) return;
    position[axis] += step[axis];
    crossing[axis] += increment[axis];
    key[axis] = grid.key(position, axis);
    if (!inside(axis)) {
      if (inBox || (step[axis] > 0.0 ? key[axis] > most[axis] : key[axis] < least[axis])) return;
      continue;
    }
    inBox = inBox || (inside(0) && inside(1) && inside(2));
    if (inBox) visit(VoxelKey(key[0], key[1], key[2]));
  }
}

}  // namespace MirelAlgorithms
