#include "tracking/PairMatcher.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace mirel {

using MirelAlgorithms::FBMatch;
using MirelAlgorithms::FBPrediction;
using MirelAlgorithms::MotionEstimate;

namespace {

constexpr int freshPrediction = 1, ownPrediction = 2;  // FBPrediction::state

ImageMotion estimateMotion(const std::vector<PairMatch>& matches, cv::Size image) {
  std::vector<cv::Vec2f> from, to;
  for (const PairMatch& match : matches) {
    from.emplace_back(match.from.x, match.from.y);
    to.emplace_back(match.to.x, match.to.y);
  }
  ImageMotion motion;
  motion.estimate = MotionEstimate::estimate(from, to, {});
  motion.valid = motion.estimate.isValid();
  if (!motion.valid) return motion;
  const cv::Vec2f centre(image.width / 2.0f, image.height / 2.0f);
  const cv::Vec2f moved = motion.estimate.apply(centre);
  motion.dx = moved[0] - centre[0];
  motion.dy = moved[1] - centre[1];
  // The estimate describes the way back, from the second frame to the first.
  motion.rotation = -motion.estimate.rotation * 180 / std::numbers::pi;
  motion.scale = 1 / motion.estimate.scale;
  motion.inlierLimit = std::max(2.0, 0.005 * std::hypot(image.width, image.height));
  return motion;
}

void rateMatches(PairResult& pair) {
  for (PairMatch& match : pair.matches) {
    const cv::Vec2f expected = pair.motion.estimate.apply(cv::Vec2f(match.from.x, match.from.y));
    match.residual = pair.motion.valid ? std::hypot(expected[0] - match.to.x, expected[1] - match.to.y)
                                       : std::numeric_limits<double>::quiet_NaN();
    match.inlier = match.residual <= pair.motion.inlierLimit;
    pair.inliers += match.inlier;
  }
  constexpr int fewest = 5;  // pairs that fix the eight parameters with one to spare
  if (pair.inliers < fewest) pair.motion.valid = false;
}

}  // namespace

std::vector<FBPrediction> PairMatcher::predict(const FrameFeatures& frame) const {
  std::vector<FBPrediction> predictions;
  const bool moving = last_.to == frame.number && last_.motion.valid;
  for (const cv::KeyPoint& point : frame.keyPoints) {
    const cv::Vec2f here(point.pt.x, point.pt.y);
    const cv::Vec2f there = moving ? last_.motion.estimate.apply(here) : here;
    predictions.push_back({there[0], there[1], params_.searchRadiusSq, moving ? ownPrediction : freshPrediction});
  }
  if (!moving) return predictions;
  for (const PairMatch& match : last_.matches) {
    if (!match.inlier) continue;
    FBPrediction& prediction = predictions[static_cast<std::size_t>(match.match.trainIdx)];
    prediction.x = 2 * match.to.x - match.from.x;
    prediction.y = 2 * match.to.y - match.from.y;
  }
  return predictions;
}

PairResult PairMatcher::match(const FrameFeatures& first, const FrameFeatures& second) {
  PairResult pair;
  pair.from = first.number;
  pair.to = second.number;
  pair.nameFrom = first.frame.name;
  pair.nameTo = second.frame.name;
  std::vector<FBPrediction> predictions = predict(first);
  pair.counts = clock_.time("counting", [&] {
    return countMatches(first.keyPoints, first.descriptors, second.keyPoints, second.descriptors, params_, predictions);
  });
  pair.wanted = std::max(1, std::min({pair.counts.features1 - 2, pair.counts.features2 - 2, params_.minMatches}));

  std::vector<FBMatch> matches;
  const bool enough = clock_.time("matching", [&] {
    return MirelAlgorithms::matchFeatures(first.keyPoints, first.descriptors, second.keyPoints, second.descriptors,
                                          params_, matches, predictions);
  });
  pair.matched = enough && !matches.empty();
  for (const FBMatch& match : matches) {
    pair.matches.push_back({match, first.keyPoints[match.queryIdx].pt, second.keyPoints[match.trainIdx].pt,
                            std::sqrt(predictions[match.queryIdx].searchRadiusSq)});
  }
  pair.matchCount = static_cast<int>(matches.size());
  pair.motion = clock_.time("motion", [&] { return estimateMotion(pair.matches, first.frame.grey.size()); });
  rateMatches(pair);
  if (!pair.matched) pair.reason = explainFewMatches(pair.counts, pair.matchCount, pair.wanted, mode_);
  last_ = pair;
  return pair;
}

}  // namespace mirel
