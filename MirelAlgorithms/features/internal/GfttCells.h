/// Corners of the smaller eigenvalue (Shi and Tomasi, Good features to track, 1994) in cells of an image.
#pragma once

#include <MirelAlgorithms/features/internal/CellDetector.h>

namespace MirelAlgorithms {

/// Computes the response of the whole image once; maximum, threshold and order are those of the cell.
class GfttCells : public CellDetector {
 public:
  /// Not covered: Harris responses, a quality level outside (0, 1), and a minimum distance above 1 pixel (up to that no
  /// pixel is too close to another).
  static bool covers(const cv::GFTTDetector& detector);

  GfttCells(const cv::GFTTDetector& detector, const cv::Mat& image);
  std::vector<cv::KeyPoint> detect(const cv::Rect& cell) override;
  void complete(std::vector<cv::KeyPoint>&) const override {}

 private:
  std::vector<const float*> cornersOf(const cv::Rect& cell) const;

  cv::Mat response_;
  double qualityLevel_;
  std::size_t maxCorners_;
  float blockSize_;
};

}  // namespace MirelAlgorithms
