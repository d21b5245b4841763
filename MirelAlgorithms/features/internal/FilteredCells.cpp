#include <MirelAlgorithms/features/internal/FilteredCells.h>

#include <cstdint>

namespace MirelAlgorithms {
namespace {

int rounded(float coordinate, MaskRounding rounding) {
  if (rounding == MaskRounding::halfToEven) return cvRound(coordinate);
  const float shifted = coordinate + 0.5f;
  return static_cast<int>(shifted);
}

// OpenCV does not check the bounds of its mask, a continuous matrix: a column behind the last one is the next row's.
cv::Point maskPixel(const cv::Point2f& point, int columns, MaskRounding rounding) {
  const std::int64_t index = std::int64_t{rounded(point.y, rounding)} * columns + rounded(point.x, rounding);
  return {static_cast<int>(index % columns), static_cast<int>(index / columns)};
}

}  // namespace

FilteredCells::FilteredCells(cv::Feature2D& detector, const cv::Mat& image, MaskRounding rounding) {
  detector.detect(image, keyPoints_);
  for (const cv::KeyPoint& keyPoint : keyPoints_) pixels_.push_back(maskPixel(keyPoint.pt, image.cols, rounding));
}

std::vector<cv::KeyPoint> FilteredCells::detect(const cv::Rect& cell) {
  std::vector<cv::KeyPoint> inside;
  for (std::size_t i = 0; i < keyPoints_.size(); ++i)
    if (cell.contains(pixels_[i])) inside.push_back(keyPoints_[i]);
  return inside;
}

}  // namespace MirelAlgorithms
