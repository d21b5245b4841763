/// What `mirel imu` tells about a recording.
#pragma once

#include "inertial/ImuEstimate.h"
#include "inertial/ImuTruth.h"
#include "output/Report.h"
#include "pictures/TimePlot.h"

#include <optional>
#include <string>

namespace mirel {

/// All that a run has found out.
struct ImuResult {
  std::string name;  ///< of the recording
  ImuRecording recording;
  ImuFilterOptions asked, used;
  ImuEstimate estimate;
  std::optional<TruthComparison> truth;
};

/// Fields are described in docs/imu-files.md.
nlohmann::json resultJson(const ImuResult& result);

/// Angles, filtered acceleration, speed; with a truth also the error.
TimePlot timePlot(const ImuResult& result);

/// Without pictures and charts.
Report imuReport(const ImuResult& result, const nlohmann::json& numbers);

/// The lines of the console.
std::string summaryText(const ImuResult& result, const nlohmann::json& numbers);

}  // namespace mirel
