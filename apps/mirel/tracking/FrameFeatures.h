/// Features and descriptors of one frame.
#pragma once

#include "input/FrameSource.h"
#include "options/SettingsOption.h"
#include "output/RunRecord.h"

#include <opencv2/core/types.hpp>
#include <vector>

namespace mirel {

struct FrameFeatures {
  int number = 0;  ///< 1 for the first frame of a run
  Frame frame;
  int found = 0;                        ///< features before descriptors were made; a family may drop some
  std::vector<cv::KeyPoint> keyPoints;  ///< those that have a descriptor
  cv::Mat descriptors;                  ///< one row for each of them
};

/// Finds and describes the features of a frame as the settings want it. Throws `UsageError` where the library
/// refuses image or settings.
FrameFeatures extractFeatures(Frame frame, int number, const Settings& settings, StageClock& clock);

/// Features per cell of a grid of `cells` x `cells` over the image, row by row.
std::vector<int> countPerCell(const std::vector<cv::KeyPoint>& keyPoints, cv::Size image, int cells);

}  // namespace mirel
