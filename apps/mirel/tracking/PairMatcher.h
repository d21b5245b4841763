/// Matching of one frame with the next, and the image motion between them.
#pragma once

#include "tracking/FrameFeatures.h"
#include "tracking/TrackPredictor.h"

#include <MirelAlgorithms/matching/FeatureMatching.h>

namespace mirel {

class PairMatcher {
 public:
  /// @param predicts  whether to search features where their track or else the last image motion takes them, and to
  ///                  compare that with searching around their own positions; without effect in mode exhaustive, which
  ///                  searches everywhere
  PairMatcher(MirelAlgorithms::FBMFilterMode mode, bool predicts, StageClock& clock);

  /// Matches two frames; the first one is the second one of the pair before.
  PairResult match(const FrameFeatures& first, const FrameFeatures& second);

 private:
  using Predictions = std::vector<MirelAlgorithms::FBPrediction>;

  MirelAlgorithms::FBPrediction predict(int feature, cv::Point2f here) const;
  Predictions predict(const FrameFeatures& frame) const;
  bool findMatches(const FrameFeatures& first, const FrameFeatures& second, Predictions& predictions,
                   std::vector<MirelAlgorithms::FBMatch>& matches) const;
  int countWithoutPrediction(const FrameFeatures& first, const FrameFeatures& second) const;

  MirelAlgorithms::FBMFilterMode mode_;
  MirelAlgorithms::FBMValidationParams params_;
  bool predicts_;
  StageClock& clock_;
  ImageMotion motion_;  ///< of the pair before
  TrackPredictor tracks_;
};

}  // namespace mirel
