#include "pictures/Raster.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

namespace mirel {

namespace {

constexpr float nothing = -(std::numeric_limits<float>::infinity)();

/// The whole pixels from `low` to `high` that the picture has, as [begin, end).
cv::Range clipped(double low, double high, int size) {
  const double begin = std::clamp(std::ceil(low), 0.0, static_cast<double>(size));
  const double end = std::clamp(std::floor(high) + 1, begin, static_cast<double>(size));
  return {static_cast<int>(begin), static_cast<int>(end)};
}

/// Twice the signed area of the triangle a, b and (x, y).
double edge(const Raster::Point& a, const Raster::Point& b, double x, double y) {
  return (b.x() - a.x()) * (y - a.y()) - (b.y() - a.y()) * (x - a.x());
}

}  // namespace

Raster::Raster(const cv::Mat& background) : depths_(background.size() * samples, nothing) {
  cv::resize(background, colours_, depths_.size(), 0, 0, cv::INTER_NEAREST);
}

void Raster::fill(const Point& pixelA, const Point& pixelB, const Point& pixelC, const cv::Vec3b& colour) {
  const Point a = pixelA * samples, b = pixelB * samples, c = pixelC * samples;
  const double area = edge(a, b, c.x(), c.y());
  if (area == 0 || !std::isfinite(area)) return;
  const auto [left, right] = std::minmax({a.x(), b.x(), c.x()});
  const auto [top, bottom] = std::minmax({a.y(), b.y(), c.y()});
  const cv::Range columns = clipped(left, right, colours_.cols), rows = clipped(top, bottom, colours_.rows);
  for (int y = rows.start; y < rows.end; ++y) {
    for (int x = columns.start; x < columns.end; ++x) {
      const double u = edge(b, c, x, y) / area, v = edge(c, a, x, y) / area, w = 1 - u - v;
      if (u < 0 || v < 0 || w < 0) continue;
      const auto depth = static_cast<float>(u * a.z() + v * b.z() + w * c.z());
      if (depth <= depths_(y, x)) continue;
      depths_(y, x) = depth;
      colours_.at<cv::Vec3b>(y, x) = colour;
    }
  }
}

void Raster::drawLines(const std::vector<std::pair<Point, Point>>& lines, double width, double bias,
                       const cv::Vec3b& colour, double strength) {
  cv::Mat_<std::uint8_t> covered(colours_.size(), std::uint8_t{0});
  const double half = width * samples / 2;
  const auto stamp = [&](const Point& p) {
    const cv::Range columns = clipped(p.x() - half, p.x() + half, colours_.cols);
    const cv::Range rows = clipped(p.y() - half, p.y() + half, colours_.rows);
    for (int y = rows.start; y < rows.end; ++y) {
      for (int x = columns.start; x < columns.end; ++x) {
        if (p.z() + bias * samples >= depths_(y, x)) covered(y, x) = 1;
      }
    }
  };
  const cv::Rect2d seen(-half, -half, colours_.cols + 2 * half, colours_.rows + 2 * half);
  for (const auto& [from, to] : lines) {
    const Point a = from * samples, b = to * samples;
    const cv::Rect2d around(cv::Point2d(std::min(a.x(), b.x()), std::min(a.y(), b.y())),
                            cv::Point2d(std::max(a.x(), b.x()) + 1, std::max(a.y(), b.y()) + 1));
    if ((around & seen).empty()) continue;
    const double length = std::max(std::abs(b.x() - a.x()), std::abs(b.y() - a.y()));
    const int steps = static_cast<int>(std::min(std::ceil(length), 1e5)) + 1;
    for (int i = 0; i <= steps; ++i) stamp(a + (b - a) * (static_cast<double>(i) / steps));
  }
  colours_.forEach<cv::Vec3b>([&](cv::Vec3b& pixel, const int* at) {
    if (covered(at) != 0) pixel = pixel * (1 - strength) + colour * strength;
  });
}

bool Raster::nearestToMiddle(Point& point) const {
  const cv::Point middle(colours_.cols / 2, colours_.rows / 2);
  double nearest = (std::numeric_limits<double>::infinity)();
  for (int y = 0; y < depths_.rows; ++y) {
    for (int x = 0; x < depths_.cols; ++x) {
      const double distance = std::hypot(x - middle.x, y - middle.y);
      if (depths_(y, x) == nothing || distance >= nearest) continue;
      nearest = distance;
      point = Point(x, y, depths_(y, x)) / samples;
    }
  }
  return std::isfinite(nearest);
}

cv::Mat Raster::picture() const {
  cv::Mat picture;
  cv::resize(colours_, picture, colours_.size() / samples, 0, 0, cv::INTER_AREA);
  return picture;
}

}  // namespace mirel
