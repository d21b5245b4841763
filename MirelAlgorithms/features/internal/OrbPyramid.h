/// The image pyramid of ORB (Rublee et al., ORB: an efficient alternative to SIFT or SURF, 2011) and the FAST corners
/// in it, as OpenCV makes them.
#pragma once

#include <opencv2/features2d.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Pixels of the image, along one axis, that a pixel of a pyramid level is made of.
struct Support {
  int first, last;
};

struct OrbLevel {
  cv::Mat image;
  float scale;                         ///< pixels of the image per pixel of the level
  int quota;                           ///< key points to keep
  std::vector<Support> columns, rows;  ///< of each column and row of the level
  std::vector<cv::KeyPoint> corners;   ///< of FAST, in its order, without those near the level's edge
};

/// First level: the image itself. Each further level is scaled down from the one before it.
std::vector<OrbLevel> makeOrbPyramid(const cv::ORB& orb, const cv::Mat& image);

/// The pixels of a level that stay white when a mask, white on the cell alone, is scaled down level after level and
/// everything but full white is made black. A rectangle, since bilinear weights are products of a row's and a column's.
cv::Rect whitePart(const OrbLevel& level, const cv::Rect& cell);

}  // namespace MirelAlgorithms
