/// Which views overlap, how much one sees of another, and which belong together.
#pragma once

#include "output/Report.h"
#include "views/PoseFile.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace mirel {

/// Which way the cameras look.
enum class Look {
  asTheLibrary,  ///< along -z for overlaps, along +z for scores: the poses go to both as they are
  alongMinusZ,   ///< poses are turned by 180 degrees about x for scores
  alongPlusZ     ///< poses are turned by 180 degrees about x for overlaps
};

struct ViewRange {
  double fovDegrees = 60, nearest = 0.4, farthest = 10;
  Look look = Look::asTheLibrary;

  double fov() const { return fovDegrees * 3.141592653589793 / 180; }
};

struct ViewOverlaps {
  std::string file;  ///< name of the file of poses
  ViewRange range;
  std::vector<NamedPose> views;
  std::vector<std::vector<char>> overlaps;  ///< [view][other], symmetric
  std::vector<std::vector<double>> scores;  ///< [view][other]: how much of the view the other one sees
  std::vector<std::vector<int>> groups;     ///< indices of the views, largest group first
  std::size_t pairs = 0, overlappingPairs = 0;
};

/// The pose whose overlaps are asked for, looking along -z.
VoskBase::Mat4d overlapPose(const NamedPose& view, Look look);

ViewOverlaps findOverlaps(std::string file, std::vector<NamedPose> views, const ViewRange& range);

/// Fields are described in docs/pose-files.md.
nlohmann::json resultJson(const ViewOverlaps& result);

/// Without pictures.
Report overlapReport(const ViewOverlaps& result);

/// The lines of the console, with both matrices where they have room.
std::string summaryText(const ViewOverlaps& result);

}  // namespace mirel
