/// Two frames side by side with lines between matched features.
#pragma once

#include "tracking/PairResult.h"

#include <opencv2/core/mat.hpp>

namespace mirel {

/// Lines are coloured by descriptor distance; a ring at the right end marks a match that does not agree with the image
/// motion. `circles` adds the search circles of some matches.
cv::Mat drawMatches(const cv::Mat& grey1, const cv::Mat& grey2, const PairResult& pair, bool circles);

}  // namespace mirel
