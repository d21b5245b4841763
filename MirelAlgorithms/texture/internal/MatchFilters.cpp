#include <MirelAlgorithms/texture/internal/MatchFilters.h>

#include <opencv2/calib3d.hpp>

namespace MirelAlgorithms {

void filterByKeyDistance(std::vector<PlacedMatch>& matches, double longest) {
  std::erase_if(matches, [=](const PlacedMatch& match) {
    const double dx = match.at2.x - match.at1.x, dy = match.at2.y - match.at1.y;
    return !(dx * dx + dy * dy <= longest * longest);
  });
}

void filterByHomography(std::vector<PlacedMatch>& matches, double reprojectionError) {
  constexpr std::size_t fewest = 5;
  constexpr int iterations = 2000;
  constexpr double confidence = 0.995;
  if (matches.size() < fewest) return matches.clear();

  std::vector<cv::Point2f> from, to;
  for (const PlacedMatch& match : matches) {
    from.push_back(match.at1);
    to.push_back(match.at2);
  }
  std::vector<unsigned char> inliers;
  const cv::Mat homography =
      cv::findHomography(from, to, cv::RANSAC, reprojectionError, inliers, iterations, confidence);
  if (homography.empty()) return matches.clear();
  std::size_t i = 0;
  std::erase_if(matches, [&](const PlacedMatch&) { return inliers[i++] == 0; });
}

}  // namespace MirelAlgorithms
