#include "tracking/PairMatcher.h"

#include "tracking/PairNumbers.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace mirel {

using MirelAlgorithms::FBMatch;
using MirelAlgorithms::FBPrediction;
using MirelAlgorithms::MotionEstimate;

namespace {

constexpr int atOwnPosition = 1, byTrack = 2, byMotion = 3;  // FBPrediction::state

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

/// All of the gain but the matches without.
///
/// @param predictions  as they were before matching
PredictionGain ratePredictions(const PairResult& pair, const std::vector<FBPrediction>& predictions) {
  std::vector<double> error, errorOfStay;
  for (const PairMatch& match : pair.matches) {
    const FBPrediction& prediction = predictions[static_cast<std::size_t>(match.match.queryIdx)];
    if (prediction.state != byTrack) continue;
    error.push_back(std::hypot(match.to.x - prediction.x, match.to.y - prediction.y));
    errorOfStay.push_back(std::hypot(match.to.x - match.from.x, match.to.y - match.from.y));
  }
  return {.matches = pair.matchCount,
          .tracked = static_cast<int>(error.size()),
          .error = median(error),
          .errorOfStay = median(errorOfStay)};
}

}  // namespace

PairMatcher::PairMatcher(MirelAlgorithms::FBMFilterMode mode, bool predicts, StageClock& clock)
    : mode_(mode), params_(mode), predicts_(predicts && mode != MirelAlgorithms::Exhaustive), clock_(clock) {}

FBPrediction PairMatcher::predict(int feature, cv::Point2f here) const {
  const float radiusSq = params_.searchRadiusSq;
  if (const auto there = tracks_.next(feature)) return {there->x, there->y, radiusSq, byTrack};
  if (!motion_.valid) return {here.x, here.y, radiusSq, atOwnPosition};
  const cv::Vec2f there = motion_.estimate.apply(cv::Vec2f(here.x, here.y));
  return {there[0], there[1], radiusSq, byMotion};
}

PairMatcher::Predictions PairMatcher::predict(const FrameFeatures& frame) const {
  const cv::Rect2f image({-0.5f, -0.5f}, cv::Size2f(frame.frame.grey.size()));
  Predictions predictions;
  for (const cv::KeyPoint& point : frame.keyPoints) {
    FBPrediction prediction = predict(static_cast<int>(predictions.size()), point.pt);
    const bool inside = image.contains({prediction.x, prediction.y});  // not so for NaN
    if (!inside) prediction = {point.pt.x, point.pt.y, params_.searchRadiusSq, atOwnPosition};
    predictions.push_back(prediction);
  }
  return predictions;
}

bool PairMatcher::findMatches(const FrameFeatures& first, const FrameFeatures& second, Predictions& predictions,
                              std::vector<FBMatch>& matches) const {
  return MirelAlgorithms::matchFeatures(first.keyPoints, first.descriptors, second.keyPoints, second.descriptors,
                                        params_, matches, predictions);
}

int PairMatcher::countWithoutPrediction(const FrameFeatures& first, const FrameFeatures& second) const {
  std::vector<FBMatch> matches;
  Predictions ownPositions;
  clock_.time("without prediction", [&] { return findMatches(first, second, ownPositions, matches); });
  return static_cast<int>(matches.size());
}

PairResult PairMatcher::match(const FrameFeatures& first, const FrameFeatures& second) {
  PairResult pair;
  pair.from = first.number;
  pair.to = second.number;
  pair.nameFrom = first.frame.name;
  pair.nameTo = second.frame.name;
  const Predictions expected = predict(first);
  pair.counts = clock_.time("counting", [&] {
    return countMatches(first.keyPoints, first.descriptors, second.keyPoints, second.descriptors, params_, expected);
  });
  pair.wanted = std::max(1, std::min({pair.counts.features1 - 2, pair.counts.features2 - 2, params_.minMatches}));

  std::vector<FBMatch> matches;
  Predictions predictions = expected;
  const bool enough = clock_.time("matching", [&] { return findMatches(first, second, predictions, matches); });
  pair.matched = enough && !matches.empty();
  for (const FBMatch& match : matches) {
    pair.matches.push_back({match, first.keyPoints[match.queryIdx].pt, second.keyPoints[match.trainIdx].pt,
                            std::sqrt(predictions[match.queryIdx].searchRadiusSq)});
  }
  pair.matchCount = static_cast<int>(matches.size());
  pair.motion = clock_.time("motion", [&] { return estimateMotion(pair.matches, first.frame.grey.size()); });
  rateMatches(pair);
  if (!pair.matched) pair.reason = explainFewMatches(pair.counts, pair.matchCount, pair.wanted, mode_);
  if (!predicts_) return pair;
  if (first.number > 1) {
    pair.prediction = ratePredictions(pair, expected);
    pair.prediction->matchesWithout = countWithoutPrediction(first, second);
  }
  motion_ = pair.motion;
  tracks_.add(pair);
  return pair;
}

}  // namespace mirel
