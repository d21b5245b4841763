#include <MirelAlgorithms/features/internal/OrbPyramid.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <opencv2/imgproc.hpp>

namespace MirelAlgorithms {
namespace {

std::vector<Support> supportOfImage(int length) {
  std::vector<Support> support(length);
  for (int i = 0; i < length; ++i) support[i] = {i, i};
  return support;
}

// INTER_LINEAR_EXACT: pixel centres at i + 0.5, weights in steps of 1/256, the edge's pixels repeated.
std::vector<Support> supportOfResized(const std::vector<Support>& source, int length) {
  const int last = static_cast<int>(source.size()) - 1;
  const double scale = 1.0 / (static_cast<double>(length) / static_cast<double>(source.size()));
  std::vector<Support> support(length);
  for (int i = 0; i < length; ++i) {
    const double at = scale * (i + 0.5) - 0.5;
    const int left = cvFloor(at), weightOfRight = cvRound((at - left) * 256.0);
    const int from = std::clamp(weightOfRight == 256 ? left + 1 : left, 0, last);
    const int to = std::clamp(weightOfRight == 0 ? left : left + 1, 0, last);
    support[i] = {source[from].first, source[to].last};
  }
  return support;
}

// Pixels whose support lies in [begin, end).
cv::Range supportedWithin(const std::vector<Support>& support, int begin, int end) {
  const auto from =
      std::partition_point(support.begin(), support.end(), [=](const Support& s) { return s.first < begin; });
  const auto to = std::partition_point(from, support.end(), [=](const Support& s) { return s.last < end; });
  return {static_cast<int>(from - support.begin()), static_cast<int>(to - support.begin())};
}

// A geometric series with the factor of the scales; the last level takes what rounding left over.
std::vector<int> quotas(int budget, double scaleFactor, int levels) {
  const float factor = static_cast<float>(1.0 / scaleFactor);
  float quota = static_cast<float>(budget) * (1.0f - factor) /
                (1.0f - static_cast<float>(std::pow(static_cast<double>(factor), static_cast<double>(levels))));
  std::vector<int> result;
  for (int level = 0; level < levels - 1; ++level, quota *= factor) result.push_back(cvRound(quota));
  result.push_back(std::max(budget - std::accumulate(result.begin(), result.end(), 0), 0));
  return result;
}

cv::Mat scaledDown(const cv::Mat& source, const cv::Size& size) {
  cv::Mat result;
  cv::resize(source, result, size, 0.0, 0.0, cv::INTER_LINEAR_EXACT);
  return result;
}

void findCorners(const cv::ORB& orb, OrbLevel& level) {
  cv::FAST(level.image, level.corners, orb.getFastThreshold(), true);
  cv::KeyPointsFilter::runByImageBorder(level.corners, level.image.size(), orb.getEdgeThreshold());
}

}  // namespace

std::vector<OrbLevel> makeOrbPyramid(const cv::ORB& orb, const cv::Mat& image) {
  const std::vector<int> quota = quotas(orb.getMaxFeatures(), orb.getScaleFactor(), orb.getNLevels());
  std::vector<OrbLevel> levels;
  for (int i = 0; i < orb.getNLevels(); ++i) {
    OrbLevel level;
    level.scale = static_cast<float>(std::pow(orb.getScaleFactor(), static_cast<double>(i)));
    level.quota = quota[i];
    if (i == 0) {
      level.image = image;
      level.columns = supportOfImage(image.cols);
      level.rows = supportOfImage(image.rows);
    } else {
      const float scale = 1.0f / level.scale;
      const cv::Size size(cvRound(static_cast<float>(image.cols) * scale),
                          cvRound(static_cast<float>(image.rows) * scale));
      level.image = scaledDown(levels.back().image, size);
      level.columns = supportOfResized(levels.back().columns, size.width);
      level.rows = supportOfResized(levels.back().rows, size.height);
    }
    findCorners(orb, level);
    levels.push_back(std::move(level));
  }
  return levels;
}

cv::Rect whitePart(const OrbLevel& level, const cv::Rect& cell) {
  const cv::Range columns = supportedWithin(level.columns, cell.x, cell.x + cell.width);
  const cv::Range rows = supportedWithin(level.rows, cell.y, cell.y + cell.height);
  return {columns.start, rows.start, columns.size(), rows.size()};
}

}  // namespace MirelAlgorithms
