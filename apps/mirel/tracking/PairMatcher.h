/// Matching of one frame with the next, and the image motion between them.
#pragma once

#include "tracking/FrameFeatures.h"
#include "tracking/MatchCounts.h"

#include <MirelAlgorithms/matching/FeatureMatching.h>
#include <MirelAlgorithms/matching/MotionEstimate.h>

namespace mirel {

/// Image motion in the words of a user: what happens to the picture from the first frame to the second.
struct ImageMotion {
  bool valid = false;      ///< whether there is an estimate that five matches or more agree with
  double dx = 0, dy = 0;   ///< where the image centre goes, pixels
  double rotation = 0;     ///< degrees, from the x axis to the y axis (clockwise on the screen)
  double scale = 1;        ///< above 1: the picture grows
  double inlierLimit = 0;  ///< pixels to which inliers agree: 0.5 % of the image diagonal, at least 2
  MirelAlgorithms::MotionEstimate estimate;
};

struct PairMatch {
  MirelAlgorithms::FBMatch match;
  cv::Point2f from, to;    ///< pixels
  float searchRadius = 0;  ///< of the circle the match was found in, pixels
  double residual = 0;     ///< distance from where the motion puts it, pixels; NaN without a motion
  bool inlier = false;
};

struct PairResult {
  int from = 0, to = 0;  ///< frame numbers
  std::string nameFrom, nameTo;
  MatchCounts counts;              ///< of the first stage
  int wanted = 0;                  ///< matches needed
  bool matched = false;            ///< whether there are enough
  std::vector<PairMatch> matches;  ///< final, in order of the first frame's features
  int matchCount = 0, inliers = 0;
  ImageMotion motion;
  std::string reason;  ///< why there are not enough
};

class PairMatcher {
 public:
  PairMatcher(MirelAlgorithms::FBMFilterMode mode, StageClock& clock) : mode_(mode), params_(mode), clock_(clock) {}

  /// Matches two frames in sequence. Features that were matched before are expected to go on as they went, the others
  /// to follow the last image motion.
  PairResult match(const FrameFeatures& first, const FrameFeatures& second);

 private:
  std::vector<MirelAlgorithms::FBPrediction> predict(const FrameFeatures& frame) const;

  MirelAlgorithms::FBMFilterMode mode_;
  MirelAlgorithms::FBMValidationParams params_;
  StageClock& clock_;
  PairResult last_;
};

}  // namespace mirel
