/// Where tracked features will be in the next frame.
#pragma once

#include "tracking/PairResult.h"

#include <MirelAlgorithms/matching/FeaturePrediction.h>

#include <map>

namespace mirel {

class TrackPredictor {
 public:
  /// Goes on with a pair; its first frame is the second one of the pair before. Tracks without a match in it end.
  void add(const PairResult& pair);

  /// Where a feature of the last frame is expected one frame later, pixels; nothing when no track ends in it.
  std::optional<cv::Point2f> next(int feature) const;

 private:
  std::uint64_t lastFrame_ = 0;
  std::map<int, MirelAlgorithms::FeaturePrediction> tracks_;  ///< by feature of the last frame
};

}  // namespace mirel
