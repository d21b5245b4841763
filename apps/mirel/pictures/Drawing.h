/// What all pictures share: scale, text, margins.
#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <string>
#include <vector>

namespace mirel {

inline const cv::Scalar paper(255, 255, 255);
inline const cv::Scalar ink(40, 35, 30);
inline const cv::Scalar faintInk(120, 112, 105);
inline const cv::Scalar signal(255, 0, 255);

/// Factor that brings an image to a size good to look at: small ones are enlarged (whole factors), large ones reduced,
/// so that the width becomes at most `width` and the height at most 1.25 times that.
double viewScale(cv::Size image, int width);

/// The grey image in colours, `scale` times as large. `strength` below 1 fades it toward white.
cv::Mat viewOf(const cv::Mat& grey, double scale, double strength = 1);

/// Position in the enlarged or reduced image; pixel centres stay pixel centres.
cv::Point2f viewPoint(cv::Point2f point, double scale);

/// Width of a text in pixels.
int textWidth(const std::string& text, double height);

/// Writes a text whose capital letters are about `height` pixels high; `baseline` is its lower left corner.
void drawText(cv::Mat& picture, const std::string& text, cv::Point baseline, double height, const cv::Scalar& colour);

/// The text, its middle left out where it would be wider than `width` pixels.
std::string fitText(const std::string& text, double height, int width);

/// Line and circle with sub-pixel positions, without stairs.
void drawLine(cv::Mat& picture, cv::Point2f from, cv::Point2f to, const cv::Scalar& colour, int thickness);
void drawCircle(cv::Mat& picture, cv::Point2f centre, double radius, const cv::Scalar& colour, int thickness);

/// A filled circle with a dark rim.
void drawDot(cv::Mat& picture, cv::Point2f centre, double radius, const cv::Scalar& colour);

/// A white sheet around a view: lines of text above it (the first one larger), room for a colour bar below.
class Sheet {
 public:
  Sheet(const cv::Mat& view, const std::vector<std::string>& lines, int footerHeight = 40);

  cv::Mat& picture() { return picture_; }

  /// Where a colour bar goes.
  cv::Rect footer() const { return footer_; }

 private:
  cv::Mat picture_;
  cv::Rect footer_;
};

}  // namespace mirel
