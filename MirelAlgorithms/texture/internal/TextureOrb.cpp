#include <MirelAlgorithms/features/internal/CellBalancedDetection.h>
#include <MirelAlgorithms/features/internal/Enhancement.h>
#include <MirelAlgorithms/frame/internal/Require.h>
#include <MirelAlgorithms/frame/internal/Settings.h>
#include <MirelAlgorithms/texture/internal/TextureOrb.h>
#include <MirelAlgorithms/texture/internal/TextureSettings.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

namespace MirelAlgorithms {
namespace {

// OpenCV lays the levels of the pyramid, each with a border of edge threshold or patch, into one image. It takes the
// addresses in it to fit 32 bits, and the number of levels to be positive, without asking.
void requirePyramid(const char* function, const cv::ORB& orb, const cv::Mat& image) {
  constexpr int mostLevels = 1000;
  constexpr double mostPixels = 1u << 31;
  requireRange(function, "txmORBnLevels", orb.getNLevels(), 1, mostLevels);
  const double border = 1.0 + std::max({orb.getEdgeThreshold() + 0.0, orb.getPatchSize() + 0.0, 5.0});
  double pixels = 0.0;
  for (int level = 0; level < orb.getNLevels(); ++level) {
    const double scale = std::pow(orb.getScaleFactor(), level - orb.getFirstLevel());
    pixels += (image.cols / scale + 2.0 * border) * (image.rows / scale + 2.0 * border);
  }
  if (pixels > mostPixels)
    refuse(function, "pyramid of the txmORB keys", std::to_string(pixels) + " pixels", "at most 2^31");
}

[[noreturn]] void refuseFeatures(const char* function, const cv::ORB& orb) {
  refuse(function, "txmORBmaxFeatures", std::to_string(orb.getMaxFeatures()), "0 to 2^24");
}

std::vector<cv::KeyPoint> detect(const char* function, const cv::Mat& image, cv::ORB& orb,
                                 const TextureExtractionSettings& settings) {
  requireRange(function, "txmCells", settings.cells, 1, std::min(image.rows, image.cols));
  const int quota = settings.budget / settings.cells;
  auto keyPoints = detectInCells(image, orb, settings.cells, [quota](std::vector<cv::KeyPoint>& inCell) {
    cv::KeyPointsFilter::retainBest(inCell, quota);
  });
  cv::KeyPointsFilter::removeDuplicated(keyPoints);
  return keyPoints;
}

}  // namespace

cv::Ptr<cv::ORB> createTextureOrb(const SmartPtr<AttrContainer>& attrs) {
  const auto settings = readSettings<TextureOrbSettings>(attrs);
  const cv::Ptr<cv::ORB> orb = cv::ORB::create();
  orb->setMaxFeatures(settings.maxFeatures);
  orb->setScaleFactor(settings.scaleFactor);
  orb->setNLevels(settings.nLevels);
  orb->setEdgeThreshold(settings.edgeThreshold);
  orb->setFirstLevel(settings.firstLevel);
  orb->setWTA_K(settings.wtaK);
  orb->setScoreType(settings.scoreType == cv::ORB::HARRIS_SCORE ? cv::ORB::HARRIS_SCORE : cv::ORB::FAST_SCORE);
  orb->setPatchSize(settings.patchSize);
  orb->setFastThreshold(settings.fastThreshold);
  return orb;
}

TextureFeatures extractTexture(const char* function, const cv::Mat& image, const SmartPtr<AttrContainer>& attrs) {
  const auto settings = readSettings<TextureExtractionSettings>(attrs);
  const cv::Ptr<cv::ORB> orb = createTextureOrb(attrs);
  requirePyramid(function, *orb, image);
  constexpr int mostFeatures = 1 << 24;
  if (orb->getMaxFeatures() > mostFeatures) refuseFeatures(function, *orb);
  const cv::Mat grey = enhanced(image, settings.enhancement);
  TextureFeatures features;
  try {
    features.keyPoints = detect(function, grey, *orb, settings);
  } catch (const std::length_error&) {  // OpenCV reserves room for the features before it looks for any
    refuseFeatures(function, *orb);
  }
  if (!features.keyPoints.empty()) orb->compute(grey, features.keyPoints, features.descriptors);
  return features;
}

}  // namespace MirelAlgorithms
