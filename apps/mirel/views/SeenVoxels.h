/// Which regions of a scanned scene have been seen best.
#pragma once

#include "input/CsvTable.h"
#include "output/Report.h"
#include "views/PoseFile.h"

#include <MirelAlgorithms/geometry/VisibilityCheck.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace mirel {

using PosedPoints = Algorithms::VisibilityCheck::Points;

/// Points and the numbers of the poses in whose frames they are. Throws `UsageError` with file and line.
///
/// @param columns  heads or numbers of the columns for x, y, z and pose; empty: the heads x, y, z, pose
PosedPoints readPosedPoints(const CsvTable& table, const std::string& columns, const std::vector<NamedPose>& poses,
                            const std::string& poseFileName);

struct SeenVoxel {
  VoskBase::Vec3d<int> key;
  cv::Point3d centre;
  std::size_t points = 0, rays = 0;
  int firstPose = 0, lastPose = 0, score = 0;
};

struct SeenVoxels {
  std::string pointsFile, posesFile;
  std::size_t points = 0;
  std::vector<NamedPose> poses;
  double voxelSize = 0;
  std::vector<Eigen::Vector3d> sensors;
  std::vector<SeenVoxel> voxels;   ///< all that were kept, the highest score first
  std::vector<SeenVoxel> regions;  ///< the best voxels, those near a better one left out
};

/// Throws `UsageError` for points too many voxels away from the origin.
///
/// @param result   complete but for the voxels and regions, which are filled in
/// @param regions  how many best voxels to look for
void findSeenVoxels(SeenVoxels& result, const PosedPoints& points, int regions);

/// Fields are described in docs/pose-files.md.
nlohmann::json resultJson(const SeenVoxels& result);

/// Why there is no scored voxel.
std::string whyNothing(const SeenVoxels& result);

/// Without pictures.
Report seenReport(const SeenVoxels& result);

/// The lines of the console.
std::string summaryText(const SeenVoxels& result);

}  // namespace mirel
