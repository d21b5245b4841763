#include <MirelAlgorithms/features/internal/DescriptorFamilies.h>
#include <MirelAlgorithms/features/internal/Detectors.h>
#include <MirelAlgorithms/features/internal/Latch.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#if MIREL_HAS_XFEATURES2D
#include <opencv2/xfeatures2d.hpp>
#endif

namespace MirelAlgorithms {
namespace {

cv::Ptr<cv::Feature2D> createAkazeDescriptor() {
  constexpr int fullSize = 0, channels = 3, octaves = 4, octaveLayers = 4;
  constexpr float threshold = 0.001f;
  return cv::AKAZE::create(cv::AKAZE::DESCRIPTOR_MLDB, fullSize, channels, threshold, octaves, octaveLayers,
                           cv::KAZE::DIFF_PM_G2);
}

cv::Ptr<cv::Feature2D> createFreak([[maybe_unused]] const char* function) {
#if MIREL_HAS_XFEATURES2D
  constexpr bool orientationNormalised = true, scaleNormalised = true;
  constexpr float patternScale = 22.0f;
  constexpr int octaves = 4;
  return cv::xfeatures2d::FREAK::create(orientationNormalised, scaleNormalised, patternScale, octaves);
#else
  refuseWithoutXfeatures2d(function, "FREAK");
#endif
}

cv::Ptr<cv::Feature2D> createFamily(const char* function, int family) {
  switch (family) {
    case 1:
      return createAkazeDescriptor();
    case 2:
      return createFreak(function);
    case 3:
      return createBrisk();
    default:
      return createOrb();
  }
}

}  // namespace

void refuseWithoutXfeatures2d(const char* function, const char* family) {
  throw std::runtime_error(std::string(function) + ": " + family +
                           " needs OpenCV's xfeatures2d module, and this library was built without it; run "
                           "`./dev setup` and build again, or build with an OpenCV that has the module");
}

void keepFinite(std::vector<cv::KeyPoint>& keyPoints) {
  std::erase_if(keyPoints, [](const cv::KeyPoint& k) {
    return !std::isfinite(k.pt.x) || !std::isfinite(k.pt.y) || !std::isfinite(k.angle);
  });
}

void computeAligned(cv::Feature2D& family, const cv::Mat& image, std::vector<cv::KeyPoint>& keyPoints,
                    cv::Mat& descriptors) {
  keepFinite(keyPoints);
  descriptors.release();
  if (!keyPoints.empty()) family.compute(image, keyPoints, descriptors);
}

void describeByFamily(const char* function, int family, const cv::Mat& image, std::vector<cv::KeyPoint>& keyPoints,
                      cv::Mat& descriptors) {
  const bool latch = family < 1 || family > 4, brisk = family == 3;
  // BRISK takes a rotation from a table, and finds it from one turn below to almost two above.
  if (brisk) std::erase_if(keyPoints, [](const cv::KeyPoint& k) { return !(k.angle >= -360 && k.angle < 719); });
  if (latch)
    computeLatch(function, image, keyPoints, descriptors, {.bytes = 32, .halfPatch = 3});
  else
    computeAligned(*createFamily(function, family), image, keyPoints, descriptors);
}

}  // namespace MirelAlgorithms
