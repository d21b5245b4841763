/// Files of camera poses, see docs/pose-files.md.
#pragma once

#include "input/ImageFile.h"

#include <MirelAlgorithms/Host.h>

#include <Eigen/Core>
#include <opencv2/core/types.hpp>
#include <string>
#include <vector>

namespace mirel {

inline constexpr FileKind poseFile = {"a file of poses", "poses.json"};

/// Coordinates and distances farther out than this are taken for a mistake.
inline constexpr double farthest = 1e9;

struct NamedPose {
  std::string name;
  int number = 0;
  VoskBase::Mat4d pose;  ///< camera to world, rigid

  cv::Point3d position() const { return {pose[12], pose[13], pose[14]}; }
};

/// Reads the poses of a file, in its order; numbers are unique. Throws `UsageError` that names file and place.
std::vector<NamedPose> readPoses(const std::string& file, const std::string& text);

/// The same transformation with the elements of a row, not of an axis, side by side in memory: the position at elements
/// 3, 7 and 11 instead of 12, 13 and 14.
Eigen::Matrix4d rowsInMemory(const VoskBase::Mat4d& pose);

/// A point of the camera's frame in the world.
cv::Point3d toWorld(const VoskBase::Mat4d& pose, const cv::Point3d& point);

}  // namespace mirel
