/// The outcome of following a sequence of frames, as numbers and as text.
#pragma once

#include "output/RunRecord.h"
#include "tracking/PairResult.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace mirel {

struct TrackedFrame {
  int number = 0;
  std::string name;
  cv::Size size;
  int features = 0;
};

struct TrackResult {
  std::string mode;
  cv::Size frameSize;  ///< of the first frame
  std::vector<TrackedFrame> frames;
  std::vector<PairResult> pairs;
  int longestTrack = 0;  ///< frames

  int matchedPairs() const;
  std::vector<double> featureCounts() const;
};

/// "640 x 480", with the last frame's size where it is another one.
std::string sizeText(const TrackResult& result);

/// Every number of the result; fields are described in docs/track-json.md.
nlohmann::json resultJson(const TrackResult& result);

/// Aligned lines for the console.
std::string summaryText(const TrackResult& result, const StageClock& clock);

}  // namespace mirel
