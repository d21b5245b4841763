/// Score of one voxel.
#pragma once

#include <Eigen/Core>
#include <vector>

namespace MirelAlgorithms {

/// The scan that voxels are scored on, in the world.
struct SeenScene {
  std::vector<Eigen::Vector3d> points;
  std::vector<int> poseOfPoint;                       ///< index into `sensors`
  std::vector<std::vector<Eigen::Vector3d>> sensors;  ///< sensor points, at least three, by pose
  double extent = 0.0;                                ///< largest coordinate among all of these
};

/// How often a sampled point lies on the way from the point of a sampled sight line to a sensor point: between both
/// ends and no further away from it than a thousandth of its distance from the sensor or of that of its foot, whichever
/// is larger. The sight lines are looked at in parallel.
///
/// @param points, rays  indices of points; may repeat
int voxelScore(const SeenScene& scene, const std::vector<int>& points, const std::vector<int>& rays);

}  // namespace MirelAlgorithms
