/// The outcome of following a sequence of frames, and the forms it is shown in.
#pragma once

#include "output/Report.h"
#include "tracking/PairMatcher.h"
#include "tracking/Tracks.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace mirel {

struct TrackedFrame {
  int number = 0;
  std::string name;
  int features = 0;
};

struct TrackResult {
  std::string mode;
  cv::Size frameSize;
  std::vector<TrackedFrame> frames;
  std::vector<PairResult> pairs;
  int longestTrack = 0;

  int matchedPairs() const;
};

/// Every number of the result ("schema" 1).
nlohmann::json resultJson(const TrackResult& result);

/// Aligned lines for the console.
std::string summaryText(const TrackResult& result, const StageClock& clock);

/// Answer, verdict, charts and tables of the report.
Report trackReport(const TrackResult& result, const StageClock& clock);

}  // namespace mirel
