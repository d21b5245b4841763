/// The points of a list that were kept, and what became of the others.
#pragma once

#include "options/SettingsOption.h"
#include "output/Report.h"
#include "smoothing/DropReasons.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace mirel {

inline constexpr const char* pointOperation = "smoothSparse3D";

struct PointChoice {
  std::string table, columns;
  PointRun run;
  bool enough = false;      ///< whether there is a result
  std::vector<Fate> fates;  ///< one per row

  /// Rows with that fate.
  std::int64_t count(Fate fate) const { return std::count(fates.begin(), fates.end(), fate); }

  /// "grid, every second row".
  std::string method() const;

  /// Reasons that the method can give, and the unexplained ones if there are any.
  std::vector<Fate> reasons() const;
};

/// @param points  CV_32FC1, five columns
PointChoice choosePoints(const cv::Mat& points, const Settings& settings);

/// Why there is no result: which rule, what was found and wanted.
std::string whyNothing(const PointChoice& choice);

/// Fields are described in docs/point-files.md.
nlohmann::json resultJson(const PointChoice& choice);

/// Without pictures.
Report pointReport(const PointChoice& choice);

/// The lines of the console.
std::string summaryText(const PointChoice& choice);

}  // namespace mirel
