/// What matching two frames of a sequence gave.
#pragma once

#include "tracking/MatchCounts.h"

#include <MirelAlgorithms/matching/MotionEstimate.h>

#include <optional>

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

/// Matches with features searched where they are expected, and with all of them searched around their own position.
struct PredictionGain {
  int matches = 0, matchesWithout = 0;
  int tracked = 0;         ///< matches whose position was predicted from their track; the others followed the motion
  double error = 0;        ///< median distance of those from the predicted position, pixels; NaN without any
  double errorOfStay = 0;  ///< median distance of the same from the position in the first frame
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
  std::optional<PredictionGain> prediction;  ///< of pairs with frames before them
  std::string reason;                        ///< why there are not enough
};

}  // namespace mirel
