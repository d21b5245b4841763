#include <MirelAlgorithms/features/internal/Detectors.h>

namespace MirelAlgorithms {
namespace {

cv::Ptr<cv::Feature2D> createGftt() {
  constexpr int maxCorners = 1000, blockSize = 3;
  constexpr double qualityLevel = 0.01, minDistance = 1.0, k = 0.04;
  constexpr bool harris = false;
  return cv::GFTTDetector::create(maxCorners, qualityLevel, minDistance, blockSize, harris, k);
}

// One octave only, on purpose: OpenCV's default is four.
cv::Ptr<cv::Feature2D> createAkaze() {
  constexpr int descriptorSize = 256, descriptorChannels = 3, octaves = 1, octaveLayers = 4;
  constexpr float threshold = 0.0001f;
  return cv::AKAZE::create(cv::AKAZE::DESCRIPTOR_MLDB, descriptorSize, descriptorChannels, threshold, octaves,
                           octaveLayers, cv::KAZE::DIFF_PM_G2);
}

cv::Ptr<cv::Feature2D> createMser() {
  constexpr int delta = 5, minArea = 60, maxArea = 14400, maxEvolution = 200, edgeBlurSize = 5;
  constexpr double maxVariation = 0.25, minDiversity = 0.2, areaThreshold = 1.01, minMargin = 0.003;
  return cv::MSER::create(delta, minArea, maxArea, maxVariation, minDiversity, maxEvolution, areaThreshold, minMargin,
                          edgeBlurSize);
}

}  // namespace

cv::Ptr<cv::ORB> createOrb() {
  constexpr int features = 500, levels = 8, edgeThreshold = 31, firstLevel = 0, wtaK = 2, patchSize = 31;
  constexpr int fastThreshold = 20;
  constexpr float scaleFactor = 1.2f;
  return cv::ORB::create(features, scaleFactor, levels, edgeThreshold, firstLevel, wtaK, cv::ORB::HARRIS_SCORE,
                         patchSize, fastThreshold);
}

cv::Ptr<cv::BRISK> createBrisk() {
  constexpr int threshold = 30, octaves = 3;
  constexpr float patternScale = 1.0f;
  return cv::BRISK::create(threshold, octaves, patternScale);
}

cv::Ptr<cv::Feature2D> createDetector(int featureType) {
  switch (featureType) {
    case 0:
      return createGftt();
    case 1:
      return createAkaze();
    case 2:
      return createMser();
    case 5:
      return createBrisk();
    default:
      return createOrb();
  }
}

}  // namespace MirelAlgorithms
