/// How many pairs are left after each test of matching.
#pragma once

#include <MirelAlgorithms/matching/MatchRecords.h>
#include <MirelAlgorithms/matching/ValidationParams.h>

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <string>
#include <vector>

namespace mirel {

/// Features of the first frame that are left after each test of the first stage of matching, in this order.
struct MatchCounts {
  int features1 = 0;       ///< features of the first frame
  int features2 = 0;       ///< features of the second frame
  int inCircle = 0;        ///< have a candidate in their search circle
  int withinDistance = 0;  ///< have one whose descriptor is near enough
  int ratioTest = 0;       ///< the best one is clearly better than the second best
  int backwardTest = 0;    ///< no other feature is nearly as near to it
};

/// Counts by measuring the pairs again, in the plainest way; `predictions` as they were before matching.
MatchCounts countMatches(const std::vector<cv::KeyPoint>& keyPoints1, const cv::Mat& descriptors1,
                         const std::vector<cv::KeyPoint>& keyPoints2, const cv::Mat& descriptors2,
                         const MirelAlgorithms::FBMValidationParams& params,
                         const std::vector<MirelAlgorithms::FBPrediction>& predictions);

/// Which test left nothing or least, in words with numbers, and what may help.
std::string explainFewMatches(const MatchCounts& counts, int matches, int wanted, MirelAlgorithms::FBMFilterMode mode);

}  // namespace mirel
