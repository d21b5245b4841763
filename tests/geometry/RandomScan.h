/// Scans for tests of the visibility grid.
#pragma once

#include <map>
#include <utility>
#include <vector>

#include "RandomPose.h"

struct Scan {
  std::vector<std::pair<Eigen::Vector3d, int>> points;
  std::map<int, Eigen::Matrix4d> poses;
  std::vector<Eigen::Vector3d> sensors = {{0, 0, 0}, {0.1, 0, 0}, {0, 0.1, 0.02}};
};

/// A wall, a dense spot and noise, seen from 40 poses with numbers from -10 to 68; on a lattice when `snapped`, so that
/// lines go along edges of voxels.
inline Scan randomScan(unsigned seed, int count, bool snapped = false) {
  RandomPoses random(seed);
  Scan scan;
  for (int i = 0; i < 40; ++i)
    scan.poses[2 * i - 10] = (snapped ? Eigen::Isometry3d::Identity() : random.pose(1.0)).matrix().transpose();
  for (int i = 0; i < count; ++i) {
    const int pose = 2 * random.below(40) - 10;
    const double kind = random.uniform(0, 1), reach = kind < 0.6 ? 1.5 : 3.0;
    Eigen::Vector3d p(random.uniform(-reach, reach), random.uniform(-reach, reach), random.uniform(-reach, reach));
    if (kind < 0.6) p.z() = 1.0;
    if (kind > 0.8) p = Eigen::Vector3d(0.5, 0.5, 0.5) + 0.02 * p;
    if (snapped) p = (p * 4.0).array().round() / 4.0;
    const Eigen::Isometry3d toWorld(scan.poses[pose].transpose());
    scan.points.emplace_back(toWorld.inverse() * p, pose);
  }
  return scan;
}
