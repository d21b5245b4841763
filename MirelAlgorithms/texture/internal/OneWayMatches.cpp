#include <MirelAlgorithms/texture/internal/OneWayMatches.h>

namespace MirelAlgorithms {
namespace {

cv::DMatch match(std::size_t query, std::size_t train, int distance) {
  return {static_cast<int>(query), static_cast<int>(train), static_cast<float>(distance)};
}

bool isDistinct(const NearestRow& nearest, double ratio) {
  if (nearest.nextDistance < 0) return false;
  const float quotient = static_cast<float>(nearest.distance) / static_cast<float>(nearest.nextDistance);
  return !(static_cast<double>(quotient) >= ratio);
}

}  // namespace

std::vector<cv::DMatch> matchesByRatio(const std::vector<NearestRow>& ofQueries, double ratio) {
  std::vector<cv::DMatch> matches;
  for (std::size_t q = 0; q < ofQueries.size(); ++q)
    if (isDistinct(ofQueries[q], ratio))
      matches.push_back(match(q, static_cast<std::size_t>(ofQueries[q].row), ofQueries[q].distance));
  return matches;
}

std::vector<cv::DMatch> matchesByChoice(std::size_t queries, const std::vector<NearestRow>& ofOthers) {
  std::vector<int> chosenBy(queries, -1);
  for (std::size_t t = 0; t < ofOthers.size(); ++t) {
    int& other = chosenBy[static_cast<std::size_t>(ofOthers[t].row)];
    if (other < 0 || ofOthers[t].distance < ofOthers[static_cast<std::size_t>(other)].distance)
      other = static_cast<int>(t);
  }
  std::vector<cv::DMatch> matches;
  for (std::size_t q = 0; q < queries; ++q)
    if (const int t = chosenBy[q]; t >= 0)
      matches.push_back(match(q, static_cast<std::size_t>(t), ofOthers[static_cast<std::size_t>(t)].distance));
  return matches;
}

std::vector<cv::DMatch> crossCheckMatches(const std::vector<cv::DMatch>& forward,
                                          const std::vector<cv::DMatch>& backward, std::size_t backwardQueries) {
  std::vector<const cv::DMatch*> backwardOf(backwardQueries, nullptr);
  for (const cv::DMatch& match : backward) backwardOf[static_cast<std::size_t>(match.queryIdx)] = &match;
  std::vector<cv::DMatch> agreed;
  for (const cv::DMatch& match : forward) {
    const cv::DMatch* back = backwardOf[static_cast<std::size_t>(match.trainIdx)];
    if (back && back->trainIdx == match.queryIdx && back->distance == match.distance) agreed.push_back(match);
  }
  return agreed;
}

}  // namespace MirelAlgorithms
