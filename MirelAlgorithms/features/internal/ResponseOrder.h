/// Order of key points by response.
#pragma once

#include <opencv2/core/types.hpp>
#include <vector>

namespace MirelAlgorithms {

/// The key points by falling response; those of equal response by y, then x; responses that are no numbers come last.
std::vector<cv::KeyPoint> strongestFirst(const std::vector<cv::KeyPoint>& keyPoints);

}  // namespace MirelAlgorithms
