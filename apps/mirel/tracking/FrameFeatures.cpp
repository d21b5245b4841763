#include "tracking/FrameFeatures.h"

#include "Errors.h"

#include <MirelAlgorithms/features/Descriptors.h>
#include <MirelAlgorithms/features/FeatureExtraction.h>

namespace mirel {

namespace {

FrameFeatures extract(const Frame& frame, const Settings& settings, StageClock& clock) {
  FrameFeatures result;
  cv::Mat features;
  const auto container = settings.container();
  clock.time("features",
             [&] { MirelAlgorithms::retrieveFeatures(frame.grey, features, container, /*descriptors=*/false); });
  result.found = features.rows;
  if (!features.empty()) {
    clock.time("descriptors",
               [&] { MirelAlgorithms::retrieveDescriptors(frame.grey, features, result.descriptors, container); });
  }
  for (int i = 0; i < features.rows; ++i) {
    const auto& [x, y, size, angle, response] = features.at<cv::Vec<float, 5>>(i).val;
    result.keyPoints.emplace_back(x, y, size, angle, response);
  }
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

std::vector<int> countPerCell(const std::vector<cv::KeyPoint>& keyPoints, cv::Size image, int cells) {
  std::vector<int> counts(static_cast<std::size_t>(cells) * cells);
  const auto cell = [&](float at, int length) {
    return std::clamp(static_cast<int>(static_cast<double>(at) * cells / length), 0, cells - 1);
  };
  for (const cv::KeyPoint& point : keyPoints) {
    ++counts[static_cast<std::size_t>(cell(point.pt.y, image.height)) * cells + cell(point.pt.x, image.width)];
  }
  return counts;
}

}  // namespace mirel
