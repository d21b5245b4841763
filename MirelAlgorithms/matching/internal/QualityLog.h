/// How much predictions helped, in the log.
#pragma once

#include <MirelAlgorithms/matching/MatchRecords.h>

#include <opencv2/core/types.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Logs the mean distance of the pairs from the first frame's position and from the prediction, pixels, when statistics
/// of matching are wanted and there are matches.
void matchQualityLog(const std::vector<cv::KeyPoint>& keyPoints1, const std::vector<cv::KeyPoint>& keyPoints2,
                     const std::vector<FBMatch>& matches, const std::vector<FBPrediction>& predictions);

}  // namespace MirelAlgorithms
