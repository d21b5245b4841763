#include "texture/TexturePair.h"

#include <MirelAlgorithms/texture/TextureMatching.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <opencv2/core.hpp>

namespace mirel {

namespace {

/// Distances of the nearest descriptor of the other image and of the next one.
struct Nearest {
  int distance = none, next = none;

  void compare(int other) {
    next = std::min(next, std::max(distance, other));
    distance = std::min(distance, other);
  }

  static constexpr int none = std::numeric_limits<int>::max();
};

/// For each row of both sets.
std::array<std::vector<Nearest>, 2> findNearest(const cv::Mat& descriptors1, const cv::Mat& descriptors2, int norm) {
  constexpr int rowsAtOnce = 64;
  std::array nearest = {std::vector<Nearest>(static_cast<std::size_t>(descriptors1.rows)),
                        std::vector<Nearest>(static_cast<std::size_t>(descriptors2.rows))};
  cv::Mat1i distances;
  for (int first = 0; first < descriptors1.rows; first += rowsAtOnce) {
    const cv::Mat some = descriptors1.rowRange(first, std::min(first + rowsAtOnce, descriptors1.rows));
    cv::batchDistance(some, descriptors2, distances, CV_32S, cv::noArray(), norm);
    for (int i = 0; i < some.rows; ++i) {
      const int query = first + i;
      Nearest& ofRow = nearest[0][static_cast<std::size_t>(query)];
      const int* row = distances[i];
      for (int j = 0; j < descriptors2.rows; ++j) {
        ofRow.compare(row[j]);
        nearest[1][static_cast<std::size_t>(j)].compare(row[j]);
      }
    }
  }
  return nearest;
}

/// Features that the ratio test leaves a match: what the library does inside, seen from outside.
int countRatioTest(const std::vector<Nearest>& features, double ratio) {
  if (!(ratio > 0)) return static_cast<int>(features.size());  // there is none
  return static_cast<int>(std::count_if(features.begin(), features.end(), [=](const Nearest& nearest) {
    return nearest.next != Nearest::none &&
           !(static_cast<float>(nearest.distance) / static_cast<float>(nearest.next) >= ratio);
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
  const auto [of1, of2] = findNearest(from.descriptors, to.descriptors, tests.norm);
  pair.ratioForward = countRatioTest(of1, tests.ratio);
  pair.ratioBackward = countRatioTest(of2, tests.ratio);
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
  std::string ratio = features + fmt::format(", {} and {} after the ratio test", pair.ratioForward, pair.ratioBackward);
  if (pair.ratioForward == 0 || pair.ratioBackward == 0) return ratio;
  std::string agreed = ratio + fmt::format(", {} in both directions", pair.agreed);
  if (pair.agreed == 0) return agreed;
  const std::string within =
      agreed + fmt::format(", {} within {:g} px", pair.withinDistance, std::abs(tests.longestShift));
  if (pair.withinDistance == 0) return within + "; txmMaxKeyDist sets the distance";
  return within + (pair.withinDistance < 5 ? ", too few for a homography, which takes 5" : ", none fits a homography");
}

}  // namespace mirel
