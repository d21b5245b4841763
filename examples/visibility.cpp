// A camera walks past a thing and a wall behind it: the voxel that most sight lines meet is the thing.
#include <MirelAlgorithms/MirelAlgorithms.h>

#include <Eigen/Core>
#include <cstdio>
#include <opencv2/core.hpp>

namespace {

constexpr int kPoses = 40, kMarks = 60;

// Elements in memory are row by row, the position at 3, 7 and 11: the transpose of what Eigen shows as (row, column).
Eigen::Matrix4d poseAt(double x) {
  Eigen::Matrix4d pose = Eigen::Matrix4d::Identity();
  pose.data()[3] = x;
  return pose;
}

}  // namespace

int main() {
  std::map<int, Eigen::Matrix4d> poses;
  Algorithms::VisibilityCheck::Points points;
  cv::RNG noise(2);
  for (int pose = 0; pose < kPoses; ++pose) {
    const double x = 0.02 * pose;
    poses[pose] = poseAt(x);
    cv::RNG random(1);  // every pose sees the same marks
    for (int mark = 0; mark < kMarks; ++mark) {
      // In the world: a thing of 10 cm at 1 m, and every fourth mark on a wall at 2 m; seen from the pose at (x, 0, 0).
      const bool wall = mark % 4 == 0;
      const double side = wall ? 1.0 : 0.05;
      const Eigen::Vector3d world(0.4 + random.uniform(-side, side), random.uniform(-side, side), wall ? 2.05 : 1.05);
      const double stretch = 1.0 + noise.gaussian(0.005);  // measured with an error along the line of sight
      points.emplace_back((world - Eigen::Vector3d(x, 0.0, 0.0)) * stretch, pose);
    }
  }
  const std::vector<Eigen::Vector3d> sensors = {{0.0, 0.0, 0.0}, {-0.1, 0.0, 0.0}, {0.1, 0.0, 0.0}};

  Algorithms::VisibilityCheck check(0.2);
  check.updateGrid(points, poses, sensors);
  const auto [seen, seenBy, firstPose, lastPose, score] = check.getCurrentMax();
  if (seen.empty()) {
    std::printf("no voxel was seen often enough\n");
    return 1;
  }
  Eigen::Vector3d middle = Eigen::Vector3d::Zero();
  for (const Eigen::Vector3d& point : seen) middle += point / static_cast<double>(seen.size());
  std::printf("best voxel: %zu points around x %.1f, z %.1f m, %zu sight lines, poses %d to %d, score %d\n",
              seen.size(), middle.x(), middle.z(), seenBy.size(), firstPose, lastPose, score);
}
