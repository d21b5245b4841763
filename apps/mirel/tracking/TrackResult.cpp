#include "tracking/TrackResult.h"

#include "output/Summary.h"
#include "tracking/PairNumbers.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace mirel {

namespace {

using nlohmann::json;

json motionJson(const ImageMotion& motion) {
  if (!motion.valid) return nullptr;
  const MirelAlgorithms::MotionEstimate& e = motion.estimate;
  return {{"dx_px", motion.dx},
          {"dy_px", motion.dy},
          {"shift_px", std::hypot(motion.dx, motion.dy)},
          {"rotation_deg", motion.rotation},
          {"scale", motion.scale},
          {"inlier_limit_px", motion.inlierLimit},
          {"mean_residual_px", e.meanResidual},
          {"mean_inlier_residual_px", e.meanInlierResidual},
          {"outlier_rows", e.outlierRows},
          {"matrix", e.matrix},
          {"center_px", e.center}};
}

json predictionJson(const PredictionGain& gain) {
  return {{"matches", gain.matches},
          {"matches_without", gain.matchesWithout},
          {"matches_predicted_by_track", gain.tracked},
          {"median_error_px", gain.error},
          {"median_error_standing_still_px", gain.errorOfStay}};
}

json pairJson(const PairResult& pair) {
  json object = {{"from", pair.from},
                 {"to", pair.to},
                 {"matched", pair.matched},
                 {"features_1", pair.counts.features1},
                 {"features_2", pair.counts.features2},
                 {"in_circle", pair.counts.inCircle},
                 {"in_distance", pair.counts.withinDistance},
                 {"after_ratio_test", pair.counts.ratioTest},
                 {"after_backward_test", pair.counts.backwardTest},
                 {"matches", pair.matchCount},
                 {"wanted", pair.wanted},
                 {"inliers", pair.inliers},
                 {"motion", motionJson(pair.motion)}};
  if (pair.prediction) object["prediction"] = predictionJson(*pair.prediction);
  if (!pair.matched) object["reason"] = pair.reason;
  return object;
}

std::string frameRange(const TrackResult& result) {
  return fmt::format("{} ({} to {}, {} px)", result.frames.size(), result.frames.front().name,
                     result.frames.back().name, sizeText(result));
}

std::string motionLines(const TrackResult& result) {
  if (result.pairs.size() == 1) return summaryLine("motion", describeMotion(result.pairs[0].motion));
  std::string text;
  const std::vector<PairResult> moving = movingPairs(result.pairs);
  for (const PairNumber& number : motionNumbers()) {
    text += summaryLine(number.label, Spread(numbersOf(moving, number), number.format).text());
  }
  return text + summaryLine("pairs", fmt::format("{} of {} matched, longest track {} frames", result.matchedPairs(),
                                                 result.pairs.size(), result.longestTrack));
}

std::string predictionLine(const TrackResult& result) {
  const auto gain = totalGain(result.pairs);
  if (!gain) return "";
  return summaryLine("prediction",
                     fmt::format("{} matches, {} without; off by {} px, standing still by {} px", gain->matches,
                                 gain->matchesWithout, pixels(gain->error), pixels(gain->errorOfStay)));
}

}  // namespace

int TrackResult::matchedPairs() const {
  return static_cast<int>(std::count_if(pairs.begin(), pairs.end(), [](const auto& pair) { return pair.matched; }));
}

std::vector<double> TrackResult::featureCounts() const {
  std::vector<double> counts;
  for (const TrackedFrame& frame : frames) counts.push_back(frame.features);
  return counts;
}

std::string sizeText(const TrackResult& result) {
  const auto text = [](cv::Size size) { return fmt::format("{} x {}", size.width, size.height); };
  const cv::Size last = result.frames.back().size;
  return text(result.frameSize) + (last == result.frameSize ? "" : " to " + text(last));
}

json resultJson(const TrackResult& result) {
  json frames = json::array(), pairs = json::array();
  for (const TrackedFrame& frame : result.frames) {
    frames.push_back({{"frame", frame.number},
                      {"name", frame.name},
                      {"width_px", frame.size.width},
                      {"height_px", frame.size.height},
                      {"features", frame.features}});
  }
  for (const PairResult& pair : result.pairs) pairs.push_back(pairJson(pair));
  json object = {{"schema", 1},
                 {"command", "track"},
                 {"mode", result.mode},
                 {"width_px", result.frameSize.width},
                 {"height_px", result.frameSize.height},
                 {"frames", frames},
                 {"pairs", pairs},
                 {"matched_pairs", result.matchedPairs()},
                 {"longest_track_frames", result.longestTrack}};
  if (const auto gain = totalGain(result.pairs)) object["prediction"] = predictionJson(*gain);
  return object;
}

std::string summaryText(const TrackResult& result, const StageClock& clock) {
  std::string text = summaryLine("frames", frameRange(result));
  text += summaryLine("features", Spread(result.featureCounts(), "{:.0f}").text() + " per frame");
  for (const PairNumber& test : testNumbers()) {
    text += summaryLine(test.label, Spread(numbersOf(result.pairs, test), test.format).text());
  }
  return text + predictionLine(result) + motionLines(result) + summaryLine("time", describeStages(clock));
}

}  // namespace mirel
