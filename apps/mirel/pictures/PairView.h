/// Two images side by side, and lines between them.
#pragma once

#include "pictures/ColourBar.h"

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace mirel {

/// A feature of the first image that matches one of the second.
struct PairLine {
  cv::Point2f from, to;  ///< pixels
  double value;          ///< what the line's colour tells
};

/// Both images at one scale.
class PairView {
 public:
  PairView(const cv::Mat& grey1, const cv::Mat& grey2);

  cv::Mat& picture() { return picture_; }
  double scale() const { return scale_; }

  /// The part that shows the second image.
  cv::Mat second() { return picture_(second_); }

  /// Where a position in the second image is in the picture.
  cv::Point2f placeInSecond(cv::Point2f point) const;

  /// Lines, and dots at their ends. Of very many matches only some have a line: `lineStep`.
  void draw(const std::vector<PairLine>& lines, const ColourScale& colours);

  /// One match in so many has a line.
  static std::size_t lineStep(std::size_t matches);

  /// "; one match in 3 has a line", or nothing when each has one.
  static std::string lineStepText(std::size_t matches);

 private:
  double scale_;
  cv::Rect second_;
  cv::Mat picture_;
};

/// The colours for the values of the lines.
ColourScale coloursOf(const std::vector<PairLine>& lines);

}  // namespace mirel
