/// A scene from two sides.
#pragma once

#include <array>
#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <string>
#include <vector>

namespace mirel {

/// Two plots below each other, to the same scale and with the same x axis: the scene from above (y over x), and from
/// the side (z over x).
class SceneView {
 public:
  enum Side { above, side };
  static constexpr std::array sides = {above, side};

  /// @param shown  points that the plots have room for; at least one
  explicit SceneView(const std::vector<cv::Point3d>& shown);

  cv::Mat& picture() { return picture_; }

  /// Where a point of the scene is in one of the plots, in pixels of `picture`.
  cv::Point2f at(Side plot, const cv::Point3d& point) const;

  /// Pixels per metre.
  double scale() const { return scale_; }

  cv::Rect area(Side plot) const { return areas_[plot]; }

 private:
  void drawAxes(Side plot);

  cv::Mat picture_;
  double scale_;
  cv::Point3d centre_;
  std::array<cv::Rect, 2> areas_;
};

/// Blends a filled convex polygon into a picture.
void fillConvex(cv::Mat& picture, const std::vector<cv::Point2f>& points, const cv::Scalar& colour, double strength);

/// Texts beside points, each where it covers no other one; left out where there is no room.
class Labels {
 public:
  Labels(cv::Mat& picture, cv::Rect area) : picture_(picture), area_(area) {}

  /// No text will stand here.
  void keepFree(cv::Rect box) { taken_.push_back(box); }

  /// @param away  direction that the text should stand in, any length
  void add(const std::string& text, cv::Point2f point, cv::Point2f away, const cv::Scalar& colour);

 private:
  cv::Mat& picture_;
  cv::Rect area_;
  std::vector<cv::Rect> taken_;
};

}  // namespace mirel
