#include <MirelAlgorithms/features/internal/OrbMeasures.h>

#include <cmath>
#include <opencv2/core/fast_math.hpp>
#include <opencv2/core/utility.hpp>

namespace MirelAlgorithms {
namespace {

constexpr int window = 7;

int rowHalfWidth(int radius, int row) { return cvRound(std::sqrt(static_cast<double>(radius) * radius - row * row)); }

}  // namespace

float harrisResponse(const uchar* centre, std::ptrdiff_t step) {
  int xx = 0, yy = 0, xy = 0;
  for (int y = -window / 2; y <= window / 2; ++y)
    for (int x = -window / 2; x <= window / 2; ++x) {
      const uchar *row = centre + y * step + x, *above = row - step, *below = row + step;
      const int dx = 2 * (row[1] - row[-1]) + (above[1] - above[-1]) + (below[1] - below[-1]);
      const int dy = 2 * (below[0] - above[0]) + (below[-1] - above[-1]) + (below[1] - above[1]);
      xx += dx * dx;
      yy += dy * dy;
      xy += dx * dy;
    }
  constexpr float k = 0.04f;
  constexpr float scale = 1.0f / (4 * window * 255.0f);
  const float a = static_cast<float>(xx), b = static_cast<float>(yy), c = static_cast<float>(xy);
  return (a * b - c * c - k * (a + b) * (a + b)) * (scale * scale * scale * scale);
}

// Symmetric: what the upper octant has at (row, column), the lower one has at (column, row).
std::vector<int> discHalfWidths(int radius) {
  const int diagonal = cvCeil(static_cast<float>(radius) * std::sqrt(2.0f) / 2.0f);
  std::vector<int> halfWidths;
  for (int row = 0; row <= radius; ++row) {
    int halfWidth = row < diagonal ? rowHalfWidth(radius, row) : 0;
    if (row >= diagonal)
      while (halfWidth < radius && rowHalfWidth(radius, halfWidth + 1) >= row) ++halfWidth;
    halfWidths.push_back(halfWidth);
  }
  return halfWidths;
}

float intensityCentroidAngle(const uchar* centre, std::ptrdiff_t step, const std::vector<int>& halfWidths) {
  int momentX = 0, momentY = 0;
  for (int x = -halfWidths[0]; x <= halfWidths[0]; ++x) momentX += x * centre[x];
  for (int y = 1; y < static_cast<int>(halfWidths.size()); ++y) {
    const uchar *above = centre - y * step, *below = centre + y * step;
    int difference = 0;
    for (int x = -halfWidths[y]; x <= halfWidths[y]; ++x) {
      difference += below[x] - above[x];
      momentX += x * (below[x] + above[x]);
    }
    momentY += y * difference;
  }
  return cv::fastAtan2(static_cast<float>(momentY), static_cast<float>(momentX));
}

}  // namespace MirelAlgorithms
