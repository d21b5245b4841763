/// Which matches of two images fit together by the positions of their features.
#pragma once

#include <opencv2/core/types.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Two features that match, and where they are, pixels.
struct PlacedMatch {
  int query, train;
  float distance;
  cv::Point2f at1, at2;
};

/// Keeps matches whose positions are at most `longest` apart; -5 acts as 5. Positions that are not numbers go.
void filterByKeyDistance(std::vector<PlacedMatch>& matches, double longest);

/// Keeps the inliers of the homography that RANSAC finds; none when there is none, or with fewer than 5 matches.
///
/// @param reprojectionError  largest error of an inlier, pixels
void filterByHomography(std::vector<PlacedMatch>& matches, double reprojectionError);

}  // namespace MirelAlgorithms
