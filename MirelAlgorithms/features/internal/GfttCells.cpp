#include <MirelAlgorithms/features/internal/GfttCells.h>

#include <algorithm>
#include <limits>
#include <opencv2/imgproc.hpp>

namespace MirelAlgorithms {
namespace {

constexpr int gradientSize = 3;

// No larger one among the eight neighbours.
bool isLocalMaximum(const float* at, std::ptrdiff_t step) {
  const float *above = at - step, *below = at + step, value = *at;
  return value >= at[-1] && value >= at[1] && value >= above[-1] && value >= above[0] && value >= above[1] &&
         value >= below[-1] && value >= below[0] && value >= below[1];
}

// Largest response first; of equal ones the one further down, then further right.
bool stronger(const float* a, const float* b) { return *a > *b || (*a == *b && a > b); }

float largestIn(const cv::Mat& response, const cv::Rect& cell) {
  double largest = 0.0;
  cv::minMaxLoc(response(cell), nullptr, &largest);
  return static_cast<float>(largest);
}

}  // namespace

bool GfttCells::covers(const cv::GFTTDetector& detector) {
  return !detector.getHarrisDetector() && detector.getQualityLevel() > 0.0 && detector.getQualityLevel() < 1.0 &&
         detector.getMinDistance() >= 0.0 && detector.getMinDistance() <= 1.0 && detector.getMaxFeatures() >= 0;
}

GfttCells::GfttCells(const cv::GFTTDetector& detector, const cv::Mat& image)
    : qualityLevel_(detector.getQualityLevel()),
      maxCorners_(detector.getMaxFeatures() > 0 ? static_cast<std::size_t>(detector.getMaxFeatures())
                                                : (std::numeric_limits<std::size_t>::max)()),
      blockSize_(static_cast<float>(detector.getBlockSize())) {
  cv::cornerMinEigenVal(image, response_, detector.getBlockSize(), gradientSize);
}

// Corners are local maxima above a share of the cell's largest response; a negative one, of a cell without positive
// responses, is never exceeded there. Neighbours may lie outside the cell. Pixels at the image's edge are no corners.
std::vector<const float*> GfttCells::cornersOf(const cv::Rect& cell) const {
  std::vector<const float*> corners;
  const float threshold = static_cast<float>(largestIn(response_, cell) * qualityLevel_);
  if (!(threshold >= 0.0f)) return corners;
  const std::ptrdiff_t step = static_cast<std::ptrdiff_t>(response_.step1());
  const cv::Rect inner = cell & cv::Rect(1, 1, response_.cols - 2, response_.rows - 2);
  for (int y = inner.y; y < inner.y + inner.height; ++y) {
    const float* row = response_.ptr<float>(y);
    for (int x = inner.x; x < inner.x + inner.width; ++x)
      if (row[x] > threshold && isLocalMaximum(row + x, step)) corners.push_back(row + x);
  }
  return corners;
}

std::vector<cv::KeyPoint> GfttCells::detect(const cv::Rect& cell) {
  std::vector<const float*> corners = cornersOf(cell);
  if (corners.size() > maxCorners_) {
    const auto end = corners.begin() + static_cast<std::ptrdiff_t>(maxCorners_);
    std::nth_element(corners.begin(), end, corners.end(), stronger);
    corners.erase(end, corners.end());
  }
  std::sort(corners.begin(), corners.end(), stronger);
  std::vector<cv::KeyPoint> keyPoints;
  keyPoints.reserve(corners.size());
  const std::ptrdiff_t step = static_cast<std::ptrdiff_t>(response_.step1());
  for (const float* corner : corners) {
    const std::ptrdiff_t index = corner - response_.ptr<float>(), x = index % step, y = index / step;
    keyPoints.emplace_back(static_cast<float>(x), static_cast<float>(y), blockSize_, -1.0f, *corner);
  }
  return keyPoints;
}

}  // namespace MirelAlgorithms
