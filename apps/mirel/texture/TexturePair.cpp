#include "texture/TexturePair.h"

#include <MirelAlgorithms/texture/TextureMatching.h>
#include <fmt/format.h>

#include <algorithm>
#include <opencv2/features2d.hpp>

namespace mirel {

namespace {

/// Features of `query` that the ratio test leaves a match in `train`: what the library does inside, seen from outside.
int countRatioTest(const cv::Mat& query, const cv::Mat& train, const TextureTests& tests) {
  if (query.empty() || train.empty()) return 0;
  const bool byRatio = tests.ratio > 0;
  std::vector<std::vector<cv::DMatch>> nearest;
  cv::BFMatcher(tests.norm, !byRatio).knnMatch(query, train, nearest, byRatio ? 2 : 1, cv::noArray(), true);
  return static_cast<int>(std::count_if(nearest.begin(), nearest.end(), [&](const std::vector<cv::DMatch>& list) {
    return !byRatio || (list.size() == 2 && !(list[0].distance / list[1].distance >= tests.ratio));
  }));
}

bool isNear(const cv::Vec2f& a, const cv::Vec2f& b, double longest) {
  const double dx = b[0] - a[0], dy = b[1] - a[1];
  return dx * dx + dy * dy <= longest * longest;
}

}  // namespace

TextureTests::TextureTests(const Settings& settings)
    : norm(settings.integer("txmORBWTA_K", "textureExtract, textureMatch") == 2 ? cv::NORM_HAMMING : cv::NORM_HAMMING2),
      ratio(settings.number("txmUniquenessRatio", "textureMatch")),
      longestShift(settings.number("txmMaxKeyDist", "textureMatch")) {}

TexturePair matchTexture(const TextureImage& from, TextureImage& to, const TextureTests& tests,
                         const Settings& settings) {
  TexturePair pair;
  pair.from = from.number;
  pair.to = to.number;
  pair.features1 = from.features();
  pair.features2 = to.features();
  if (from.points.empty() || to.points.empty()) return pair;
  pair.ratioForward = countRatioTest(from.descriptors, to.descriptors, tests);
  pair.ratioBackward = countRatioTest(to.descriptors, from.descriptors, tests);
  const auto container = settings.container();
  std::vector<cv::Vec3i> agreed;
  MirelAlgorithms::textureMatch(from.descriptors, to.descriptors, agreed, container);
  pair.agreed = static_cast<int>(agreed.size());
  pair.withinDistance = static_cast<int>(std::count_if(agreed.begin(), agreed.end(), [&](const cv::Vec3i& match) {
    return isNear(from.points[static_cast<std::size_t>(match[0])], to.points[static_cast<std::size_t>(match[1])],
                  tests.longestShift);
  }));
  MirelAlgorithms::textureMatch(from.points, from.descriptors, to.points, to.descriptors, pair.matches, container);
  return pair;
}

std::string whyNoMatch(const TexturePair& pair, const TextureTests& tests) {
  const std::string features = fmt::format("{} and {} features", pair.features1, pair.features2);
  if (pair.features1 == 0 || pair.features2 == 0) return features + ": nothing to compare";
  const std::string ratio =
      features + fmt::format(", {} and {} after the ratio test", pair.ratioForward, pair.ratioBackward);
  if (pair.ratioForward == 0 || pair.ratioBackward == 0) return ratio;
  const std::string agreed = ratio + fmt::format(", {} in both directions", pair.agreed);
  if (pair.agreed == 0) return agreed;
  const std::string within =
      agreed + fmt::format(", {} within {:g} px", pair.withinDistance, std::abs(tests.longestShift));
  if (pair.withinDistance == 0) return within + "; txmMaxKeyDist sets the distance";
  return within + (pair.withinDistance < 5 ? ", too few for a homography, which takes 5" : ", none fits a homography");
}

}  // namespace mirel
