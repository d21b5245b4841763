/// Triangles and lines in space, with what is nearer in front.
#pragma once

#include <Eigen/Core>
#include <opencv2/core/mat.hpp>
#include <utility>
#include <vector>

namespace mirel {

/// A picture with a depth for each of its pixels. Points are x to the right and y downward in pixels, and z toward the
/// viewer in any unit. Everything is drawn in several times the resolution, so that the picture has no stairs.
class Raster {
 public:
  using Point = Eigen::Vector3d;

  /// @param background  CV_8UC3; its size is the picture's
  explicit Raster(const cv::Mat& background);

  /// Fills a triangle; nothing where a coordinate is not finite.
  void fill(const Point& a, const Point& b, const Point& c, const cv::Vec3b& colour);

  /// Blends lines into the picture where nothing is in front of them. Where they cross they are blended once.
  /// @param bias      lines lie this much nearer, in pixels
  /// @param strength  0 to 1
  void drawLines(const std::vector<std::pair<Point, Point>>& lines, double width, double bias, const cv::Vec3b& colour,
                 double strength);

  /// The point that is seen nearest to the middle of the picture; false when there is none.
  bool nearestToMiddle(Point& point) const;

  cv::Mat picture() const;

 private:
  static constexpr int samples = 3;  // along each side of a pixel

  cv::Mat colours_;
  cv::Mat_<float> depths_;
};

}  // namespace mirel
