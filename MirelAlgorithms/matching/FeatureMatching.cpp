#include <MirelAlgorithms/frame/internal/Require.h>
#include <MirelAlgorithms/matching/FeatureMatching.h>
#include <MirelAlgorithms/matching/MotionEstimate.h>
#include <MirelAlgorithms/matching/internal/BackwardPass.h>
#include <MirelAlgorithms/matching/internal/ForwardPass.h>
#include <MirelAlgorithms/matching/internal/QualityLog.h>

#include <algorithm>
#include <string>

namespace MirelAlgorithms {
namespace {

using KeyPoints = std::vector<cv::KeyPoint>;

enum PredictionState : std::int32_t { fresh = 1, movedByMotion = 3, matched = 4 };

bool fitTogether(const KeyPoints& keyPoints1, const cv::Mat& descriptors1, const KeyPoints& keyPoints2,
                 const cv::Mat& descriptors2) {
  const auto rows = [](const cv::Mat& descriptors) { return static_cast<std::size_t>(descriptors.rows); };
  return !keyPoints1.empty() && !keyPoints2.empty() && rows(descriptors1) == keyPoints1.size() &&
         rows(descriptors2) == keyPoints2.size() && descriptors1.cols == descriptors2.cols;
}

void requireDescriptors(const char* argument, const cv::Mat& descriptors) {
  if (descriptors.cols == 0) refuse("matchFeatures", argument, "width 0", "at least one byte per descriptor");
  if (descriptors.type() != CV_8UC1) refuse("matchFeatures", argument, describe(descriptors), "CV_8UC1");
}

void prepare(std::vector<FBPrediction>& predictions, const KeyPoints& keyPoints1, float searchRadiusSq) {
  if (predictions.size() == keyPoints1.size()) return;
  predictions.clear();
  predictions.reserve(keyPoints1.size());
  for (const cv::KeyPoint& keyPoint : keyPoints1)
    predictions.push_back({keyPoint.pt.x, keyPoint.pt.y, searchRadiusSq, fresh});
}

// The accepted pairs become matches, and their predictions move onto them.
void collect(const std::vector<BestTwo>& best, const std::vector<std::uint8_t>& accepted, const KeyPoints& keyPoints2,
             std::vector<FBMatch>& matches, std::vector<FBPrediction>& predictions) {
  matches.clear();
  for (std::size_t i = 0; i < best.size(); ++i) {
    if (!accepted[i]) continue;
    FBPrediction& prediction = predictions[i];
    const cv::Point2f& position = keyPoints2[static_cast<std::size_t>(best[i].index)].pt;
    matches.push_back({static_cast<std::int32_t>(i), best[i].index, best[i].best, prediction.x, prediction.y});
    prediction.x = position.x;
    prediction.y = position.y;
    prediction.state = matched;
  }
}

MotionEstimate imageMotion(const KeyPoints& keyPoints1, const KeyPoints& keyPoints2,
                           const std::vector<FBMatch>& matches) {
  std::vector<cv::Vec2f> from, to;
  from.reserve(matches.size());
  to.reserve(matches.size());
  for (const FBMatch& match : matches) {
    from.emplace_back(keyPoints1[static_cast<std::size_t>(match.queryIdx)].pt);
    to.emplace_back(keyPoints2[static_cast<std::size_t>(match.trainIdx)].pt);
  }
  return MotionEstimate::estimate(from, to, {});
}

// Unmatched predictions follow the motion, within four times the spread of its residuals; all circles shrink.
void follow(const MotionEstimate& motion, const KeyPoints& keyPoints1, std::vector<FBPrediction>& predictions) {
  const double spread = std::max(motion.meanInlierResidual, 2.0);
  const float radiusSq = static_cast<float>(spread * spread) * 16;
  for (std::size_t i = 0; i < predictions.size(); ++i) {
    FBPrediction& prediction = predictions[i];
    if (prediction.state == matched) {
      prediction.searchRadiusSq *= 0.5f;
    } else {
      const cv::Vec2f moved = motion.apply(cv::Vec2f(keyPoints1[i].pt));
      prediction = {moved[0], moved[1], std::min(radiusSq, prediction.searchRadiusSq), movedByMotion};
    }
  }
}

bool enough(std::size_t matches, std::size_t size1, std::size_t size2, std::int32_t minMatches) {
  const auto size = static_cast<std::int32_t>(std::min(size1, size2));
  return matches >= static_cast<std::uint32_t>(std::min(size - 2, minMatches));
}

}  // namespace

bool matchFeatures(const KeyPoints& keyPoints1, const cv::Mat& descriptors1, const KeyPoints& keyPoints2,
                   const cv::Mat& descriptors2, const FBMValidationParams& params, std::vector<FBMatch>& matches,
                   std::vector<FBPrediction>& predictions) {
  if (!fitTogether(keyPoints1, descriptors1, keyPoints2, descriptors2)) return false;
  requireDescriptors("descriptors1", descriptors1);
  requireDescriptors("descriptors2", descriptors2);

  const FeatureBlocks features2(keyPoints2, descriptors2);
  ForwardPass forward(descriptors1, features2, params.maxDistance);
  const auto finish = [&] {
    collect(forward.best(), acceptedPairs(forward, params.ratio), keyPoints2, matches, predictions);
    matchQualityLog(keyPoints1, keyPoints2, matches, predictions);
  };

  prepare(predictions, keyPoints1, params.searchRadiusSq);
  forward.measure(predictions);
  finish();
  if (params.refine) {
    const MotionEstimate motion = imageMotion(keyPoints1, keyPoints2, matches);
    if (motion.isValid()) {
      follow(motion, keyPoints1, predictions);
      forward.searchAgain(predictions);
      finish();
    }
  }
  return enough(matches.size(), keyPoints1.size(), keyPoints2.size(), params.minMatches);
}

}  // namespace MirelAlgorithms
