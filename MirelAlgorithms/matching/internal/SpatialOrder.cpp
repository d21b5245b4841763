#include <MirelAlgorithms/matching/internal/SpatialOrder.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace MirelAlgorithms {
namespace {

bool isFinite(const cv::Point2f& p) { return std::isfinite(p.x) && std::isfinite(p.y); }

/// Strips of cells over the finite points; a run of points fills about four cells.
class Strips {
 public:
  Strips(const std::vector<cv::KeyPoint>& points, std::size_t runLength) {
    double right = -unbounded, bottom = -unbounded;
    for (const cv::KeyPoint& point : points) {
      if (!isFinite(point.pt)) continue;
      left_ = std::min(left_, double{point.pt.x});
      right = std::max(right, double{point.pt.x});
      top_ = std::min(top_, double{point.pt.y});
      bottom = std::max(bottom, double{point.pt.y});
    }
    const double width = right - left_, height = bottom - top_;
    const double runs = std::ceil(static_cast<double>(points.size()) / static_cast<double>(runLength));
    // Square areas: the strips' height is the width of a run, so strips^2 = runs * height / width.
    const double strips = width > 0 ? std::sqrt(runs * height / width) : runs;
    strips_ = static_cast<std::size_t>(std::clamp(strips, 1.0, runs));
    columns_ = static_cast<std::size_t>(4 * runs) / strips_ + 1;
    cellsPerRow_ = height > 0 ? static_cast<double>(strips_) / height : 0;
    cellsPerColumn_ = width > 0 ? static_cast<double>(columns_) / width : 0;
  }

  std::size_t cells() const { return strips_ * columns_ + 1; }

  /// Number of a point's cell in the order of the list; the last one is for points that are not finite.
  std::size_t cell(const cv::Point2f& p) const {
    if (!isFinite(p)) return cells() - 1;
    const std::size_t strip = std::min(strips_ - 1, static_cast<std::size_t>((p.y - top_) * cellsPerRow_));
    const std::size_t column = std::min(columns_ - 1, static_cast<std::size_t>((p.x - left_) * cellsPerColumn_));
    return strip * columns_ + (strip % 2 == 0 ? column : columns_ - 1 - column);
  }

 private:
  static constexpr double unbounded = std::numeric_limits<double>::infinity();

  double left_ = unbounded, top_ = unbounded;
  double cellsPerRow_, cellsPerColumn_;
  std::size_t strips_, columns_;
};

}  // namespace

std::vector<std::int32_t> spatialOrder(const std::vector<cv::KeyPoint>& points, std::size_t runLength) {
  const Strips strips(points, runLength);
  std::vector<std::uint32_t> cell(points.size());
  std::vector<std::uint32_t> next(strips.cells() + 1);  // where the next point of a cell goes
  for (std::size_t i = 0; i < points.size(); ++i) {
    cell[i] = static_cast<std::uint32_t>(strips.cell(points[i].pt));
    ++next[cell[i] + 1];
  }
  std::partial_sum(next.begin(), next.end(), next.begin());

  std::vector<std::int32_t> order(points.size());
  for (std::size_t i = 0; i < points.size(); ++i) order[next[cell[i]]++] = static_cast<std::int32_t>(i);
  return order;
}

}  // namespace MirelAlgorithms
