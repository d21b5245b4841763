#include <MirelAlgorithms/features/internal/DescriptorFamilies.h>
#include <MirelAlgorithms/features/internal/Latch.h>
#include <MirelAlgorithms/frame/internal/Require.h>

#include <opencv2/imgproc.hpp>

#if MIREL_HAS_XFEATURES2D
#include <opencv2/xfeatures2d.hpp>
#endif
#ifdef MIREL_HAS_LATCH_SOURCE
#include <MirelAlgorithms/features/internal/LatchPatches.h>
#endif

namespace MirelAlgorithms {

#if MIREL_HAS_XFEATURES2D

namespace {

// The image smoothed as LATCH does it, with two spare rows of zeros behind it.
//
// Up to OpenCV 4.9 LATCH smooths the image it is given in place, and in every version a patch of a key point that lies
// within half a pixel of the last row or column it accepts reaches one row or column past the image. So it gets a
// private, already smoothed image with room behind it.
cv::Mat smoothedForLatch(const cv::Mat& image) {
  constexpr double sigma = 2.0;
  cv::Mat storage = cv::Mat::zeros(image.rows + 2, image.cols, CV_8UC1);
  cv::Mat smoothed = storage.rowRange(0, image.rows);
  cv::GaussianBlur(image, smoothed, cv::Size(3, 3), sigma, sigma);
  return smoothed;
}

#ifdef MIREL_HAS_LATCH_SOURCE

// The module's `compute`, with its triplets but a faster loop.
void computeFast(const cv::xfeatures2d::LATCH& latch, int halfPatch, const cv::Mat& image,
                 std::vector<cv::KeyPoint>& keyPoints, cv::Mat& descriptors) {
  constexpr int reach = 24;  // of the centres of the patches
  keepFinite(keyPoints);
  cv::KeyPointsFilter::runByImageBorder(keyPoints, image.size(), reach + halfPatch);
  descriptors.create(static_cast<int>(keyPoints.size()), latch.descriptorSize(), CV_8UC1);
  describeLatch(image, keyPoints, LatchModule::samplingPoints(latch), halfPatch, descriptors);
}

#endif

}  // namespace

void computeLatch(const char* function, const cv::Mat& image, std::vector<cv::KeyPoint>& keyPoints,
                  cv::Mat& descriptors, const LatchSettings& settings) {
  constexpr int largestHalfPatch = 90;
  requireRange(function, "PatchSize", settings.halfPatch, 0, largestHalfPatch);
  constexpr bool rotationInvariant = true;
  constexpr double alreadySmoothed = 0.0;
  const auto latch =
      cv::xfeatures2d::LATCH::create(settings.bytes, rotationInvariant, settings.halfPatch, alreadySmoothed);
#ifdef MIREL_HAS_LATCH_SOURCE
  computeFast(*latch, settings.halfPatch, smoothedForLatch(image), keyPoints, descriptors);
#else
  computeAligned(*latch, smoothedForLatch(image), keyPoints, descriptors);
#endif
}

#else

void computeLatch(const char* function, const cv::Mat&, std::vector<cv::KeyPoint>&, cv::Mat&, const LatchSettings&) {
  refuseWithoutXfeatures2d(function, "LATCH");
}

#endif

}  // namespace MirelAlgorithms
