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
  std::vector<cv::KeyPoint> selected;   ///< as detected, within the quotas
  std::vector<cv::KeyPoint> keyPoints;  ///< those that have a descriptor; a family may drop some
  cv::Mat descriptors;                  ///< one row for each of them
};

/// Finds and describes the features of a frame as the settings want it. Throws `UsageError` where the library
/// refuses image or settings.
FrameFeatures extractFeatures(Frame frame, int number, const Settings& settings, StageClock& clock);

/// The first half of it alone.
std::vector<cv::KeyPoint> detectFeatures(const Frame& frame, const Settings& settings);

}  // namespace mirel
