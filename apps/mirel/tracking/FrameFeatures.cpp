#include "tracking/FrameFeatures.h"

#include "Errors.h"

#include <MirelAlgorithms/features/Descriptors.h>
#include <MirelAlgorithms/features/FeatureExtraction.h>

namespace mirel {

namespace {

cv::Mat detect(const Frame& frame, const Settings& settings) {
  cv::Mat features;
  MirelAlgorithms::retrieveFeatures(frame.grey, features, settings.container(), /*descriptors=*/false);
  return features;
}

std::vector<cv::KeyPoint> toKeyPoints(const cv::Mat& features) {
  std::vector<cv::KeyPoint> keyPoints;
  keyPoints.reserve(static_cast<std::size_t>(features.rows));
  for (int i = 0; i < features.rows; ++i) {
    const auto& [x, y, size, angle, response] = features.at<cv::Vec<float, 5>>(i).val;
    keyPoints.emplace_back(x, y, size, angle, response);
  }
  return keyPoints;
}

FrameFeatures extract(const Frame& frame, const Settings& settings, StageClock& clock) {
  FrameFeatures result;
  cv::Mat features = clock.time("features", [&] { return detect(frame, settings); });
  result.selected = toKeyPoints(features);
  if (features.empty()) return result;
  clock.time("descriptors", [&] {
    MirelAlgorithms::retrieveDescriptors(frame.grey, features, result.descriptors, settings.container());
  });
  result.keyPoints = toKeyPoints(features);
  return result;
}

}  // namespace

FrameFeatures extractFeatures(Frame frame, int number, const Settings& settings, StageClock& clock) {
  try {
    FrameFeatures result = extract(frame, settings, clock);
    result.number = number;
    result.frame = std::move(frame);
    return result;
  } catch (const std::exception& error) {
    throw UsageError(frame.name + ": " + oneLine(error));
  }
}

std::vector<cv::KeyPoint> detectFeatures(const Frame& frame, const Settings& settings) {
  return toKeyPoints(detect(frame, settings));
}

}  // namespace mirel
