/// Detectors that look at the mask last: they run once, and each cell picks its key points.
#pragma once

#include <MirelAlgorithms/features/internal/CellDetector.h>

namespace MirelAlgorithms {

/// How a detector finds the mask's pixel of a key point.
enum class MaskRounding {
  halfUp,      ///< x + 0.5 without its fraction, as `cv::KeyPointsFilter::runByPixelsMask`
  halfToEven,  ///< as `cvRound`
};

/// For AKAZE, BRISK (half up) and MSER (half to even).
class FilteredCells : public CellDetector {
 public:
  FilteredCells(cv::Feature2D& detector, const cv::Mat& image, MaskRounding rounding);
  std::vector<cv::KeyPoint> detect(const cv::Rect& cell) override;
  void complete(std::vector<cv::KeyPoint>&) const override {}

 private:
  std::vector<cv::KeyPoint> keyPoints_;
  std::vector<cv::Point> pixels_;  ///< of the mask, for each key point
};

}  // namespace MirelAlgorithms
