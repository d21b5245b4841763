#include <MirelAlgorithms/features/Descriptors.h>
#include <MirelAlgorithms/features/FeatureExtraction.h>
#include <MirelAlgorithms/features/FixedPointCorners.h>
#include <MirelAlgorithms/features/internal/CellBalancedDetection.h>
#include <MirelAlgorithms/features/internal/Detectors.h>
#include <MirelAlgorithms/features/internal/Enhancement.h>
#include <MirelAlgorithms/features/internal/ExtractionSettings.h>
#include <MirelAlgorithms/features/internal/FeatureMatrix.h>
#include <MirelAlgorithms/features/internal/Latch.h>
#include <MirelAlgorithms/frame/internal/Require.h>
#include <MirelAlgorithms/frame/internal/Settings.h>

namespace MirelAlgorithms {
namespace {

constexpr const char* function = "retrieveFeatures";

bool detectAndDescribe(const cv::Mat& image, cv::Mat& features, const SmartPtr<AttrContainer>& settings,
                       bool descriptors) {
  const auto choice = readSettings<DetectorChoice>(settings);
  const auto detection = readSettings<DetectionSettings>(settings);
  const auto detector = createDetector(choice.featureType);
  cv::Mat found =
      toFeatureMatrix(detectInCells(function, enhanced(image, detection.enhancement), *detector, detection));
  cv::Mat notHandedOut;
  const bool result = !descriptors || retrieveDescriptors(image, found, notHandedOut, settings);
  features = found;
  return result;
}

}  // namespace

bool retrieveFeatures(const cv::Mat& image, cv::Mat& features, SmartPtr<AttrContainer> settings, bool descriptors) {
  const auto extraction = readSettings<ExtractionSettings>(settings);
  if (extraction.type == 0) return retrieveFeaturesFPGA(image, features, settings, nullptr);

  requireGrey8(function, "image", image);
  if (extraction.type == 2) return detectAndDescribe(image, features, settings, descriptors);

  const auto detection = readSettings<DetectionSettings>(settings);
  features = toFeatureMatrix(detectOrbSubPixel(function, enhanced(image, detection.enhancement), detection));
  return true;
}

bool retrieveFeatures(const cv::Mat& image, std::vector<cv::KeyPoint>& keyPoints, cv::Mat& descriptors,
                      SmartPtr<AttrContainer> settings) {
  const auto detection = readSettings<DetectionSettings>(settings);
  const auto latch = readSettings<LatchSettings>(settings);
  requireGrey8(function, "image", image);

  const cv::Mat view = enhanced(image, detection.enhancement);
  std::vector<cv::KeyPoint> found = detectOrbSubPixel(function, view, detection);
  cv::Mat described;
  computeLatch(function, view, found, described, latch);
  keyPoints = std::move(found);
  descriptors = described;
  return true;
}

}  // namespace MirelAlgorithms
