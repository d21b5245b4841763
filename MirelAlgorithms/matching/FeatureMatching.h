/// Guided matching of two frames' features, forward and backward.
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/matching/MatchRecords.h>
#include <MirelAlgorithms/matching/ValidationParams.h>

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace MirelAlgorithms {

MIREL_API bool matchFeatures(const std::vector<cv::KeyPoint>& keyPoints1, const cv::Mat& descriptors1,
                             const std::vector<cv::KeyPoint>& keyPoints2, const cv::Mat& descriptors2,
                             const FBMValidationParams& params, std::vector<FBMatch>& matches,
                             std::vector<FBPrediction>& predictions);

}  // namespace MirelAlgorithms
