#include <MirelAlgorithms/features/internal/OrbCells.h>
#include <MirelAlgorithms/features/internal/OrbMeasures.h>

#include <algorithm>
#include <iterator>

namespace MirelAlgorithms {
namespace {

bool within(int value, int least, int most) { return value >= least && value <= most; }

const uchar* pixelAt(const OrbLevel& level, const cv::KeyPoint& corner) {
  return level.image.ptr<uchar>(cvRound(corner.pt.y), cvRound(corner.pt.x));
}

// FAST lists its corners row by row.
std::vector<cv::KeyPoint> cornersIn(const OrbLevel& level, const cv::Rect& part) {
  const auto firstAt = [&](int row) {
    return std::partition_point(level.corners.begin(), level.corners.end(),
                                [=](const cv::KeyPoint& corner) { return corner.pt.y < static_cast<float>(row); });
  };
  std::vector<cv::KeyPoint> corners;
  std::copy_if(firstAt(part.y), firstAt(part.y + part.height), std::back_inserter(corners),
               [&](const cv::KeyPoint& corner) { return part.contains(corner.pt); });
  return corners;
}

}  // namespace

bool OrbCells::covers(const cv::ORB& orb) {
  const int reach = std::max(orb.getPatchSize() / 2, harrisReach);
  return orb.getFirstLevel() == 0 && within(orb.getNLevels(), 1, 64) && orb.getScaleFactor() > 1.005 &&
         within(orb.getPatchSize(), 2, 255) && within(orb.getEdgeThreshold(), reach, 1 << 14) &&
         within(orb.getMaxFeatures(), 0, 1 << 20);
}

OrbCells::OrbCells(const cv::ORB& orb, const cv::Mat& image)
    : levels_(makeOrbPyramid(orb, image)),
      disc_(discHalfWidths(orb.getPatchSize() / 2)),
      patchSize_(orb.getPatchSize()),
      harris_(orb.getScoreType() == cv::ORB::HARRIS_SCORE) {}

// `retainBest` leaves an order of its own, and every key point that ties with the last: it is called as ORB does.
std::vector<cv::KeyPoint> OrbCells::strongestOf(const OrbLevel& level, const cv::Rect& cell) const {
  std::vector<cv::KeyPoint> corners = cornersIn(level, whitePart(level, cell));
  cv::KeyPointsFilter::retainBest(corners, harris_ ? 2 * level.quota : level.quota);
  if (!harris_) return corners;
  const auto step = static_cast<std::ptrdiff_t>(level.image.step1());
  for (cv::KeyPoint& corner : corners) corner.response = harrisResponse(pixelAt(level, corner), step);
  cv::KeyPointsFilter::retainBest(corners, level.quota);
  return corners;
}

std::vector<cv::KeyPoint> OrbCells::detect(const cv::Rect& cell) {
  std::vector<cv::KeyPoint> keyPoints;
  for (std::size_t i = 0; i < levels_.size(); ++i)
    for (cv::KeyPoint& corner : strongestOf(levels_[i], cell)) {
      corner.octave = static_cast<int>(i);
      keyPoints.push_back(corner);
    }
  return keyPoints;
}

void OrbCells::complete(std::vector<cv::KeyPoint>& keyPoints) const {
  for (cv::KeyPoint& keyPoint : keyPoints) {
    const OrbLevel& level = levels_[keyPoint.octave];
    const auto step = static_cast<std::ptrdiff_t>(level.image.step1());
    keyPoint.angle = intensityCentroidAngle(pixelAt(level, keyPoint), step, disc_);
    keyPoint.size = static_cast<float>(patchSize_) * level.scale;
    keyPoint.pt *= level.scale;
  }
}

}  // namespace MirelAlgorithms
