/// Detection in rectangles of one image, with the work shared that does not depend on the rectangle.
#pragma once

#include <memory>
#include <opencv2/features2d.hpp>
#include <vector>

namespace MirelAlgorithms {

/// A detector at work on one image.
class CellDetector {
 public:
  virtual ~CellDetector() = default;
  /// The key points of a cell: those that the detector finds in the image with a mask that is 255 on the cell and 0
  /// elsewhere. The same ones to the bit, in the same order, as soon as `complete` has seen them.
  ///
  /// @param cell  inside the image, not empty
  virtual std::vector<cv::KeyPoint> detect(const cv::Rect& cell) = 0;

  /// Fills in what `detect` may leave open in key points of its own: everything but the response. A selection of them
  /// needs no more than these completed.
  virtual void complete(std::vector<cv::KeyPoint>& keyPoints) const = 0;
};

/// The detector's cheapest form. It reads the detector's parameters now and may keep a reference to it.
///
/// AKAZE, BRISK and MSER run once. GFTT and ORB run once up to where the mask comes in; a GFTT detector does not tell
/// its gradient size, so it has to have the default, 3. Everything else, and parameters of GFTT and ORB off the beaten
/// track, run with the mask for each cell.
///
/// @param image  8-bit grey, not empty
std::unique_ptr<CellDetector> createCellDetector(cv::Feature2D& detector, const cv::Mat& image);

}  // namespace MirelAlgorithms
