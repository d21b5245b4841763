#include "tracking/TrackReport.h"

#include "tracking/PairNumbers.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace mirel {

namespace {

using nlohmann::json;

constexpr double goodShare = 0.5;  // of the matches should agree with one image motion

ReportAnswer judgeOnePair(const PairResult& pair) {
  if (!pair.matched) return {"No match", Verdict::bad, "No result: " + pair.reason};
  std::string title = fmt::format("{} matches", pair.matchCount);
  if (pair.motion.valid) title += fmt::format(", the image moved by {:.2f} px", motionNumbers()[0].of(pair));
  const bool good = inlierShare(pair) >= goodShare;
  return {title, good ? Verdict::good : Verdict::weak,
          fmt::format("{}: {} of {} matches agree with one image motion{}.", good ? "Good" : "Weak", pair.inliers,
                      pair.matchCount,
                      good ? "" : "; different depths, moving things or repeated texture can be the cause")};
}

ReportAnswer judgeSequence(const TrackResult& result) {
  const int matched = result.matchedPairs(), pairs = static_cast<int>(result.pairs.size());
  const std::string title = fmt::format("{} of {} frame pairs matched", matched, pairs);
  const auto failed = std::find_if(result.pairs.begin(), result.pairs.end(), [](const auto& p) { return !p.matched; });
  if (failed != result.pairs.end()) {
    return {title, matched == 0 ? Verdict::bad : Verdict::weak,
            fmt::format("{}: {} of {} pairs have no match, the first one is {} to {}: {}",
                        matched == 0 ? "No result" : "Weak", pairs - matched, pairs, failed->nameFrom, failed->nameTo,
                        failed->reason)};
  }
  const double share = median(numbersOf(result.pairs, {"", "", inlierShare}));
  const bool good = share >= goodShare;
  return {
      title, good ? Verdict::good : Verdict::weak,
      fmt::format("{}: in the median pair {:.0f} % of the matches agree with one image motion; the longest track has "
                  "{} of {} frames.",
                  good ? "Good" : "Weak", 100 * share, result.longestTrack, pairs + 1)};
}

ReportFact fact(const std::string& label, const Spread& spread, const std::string& note) {
  const std::string separator = spread.range.empty() || note.empty() ? "" : "; ";
  return {label, spread.median, spread.range + separator + note};
}

std::vector<ReportFact> facts(const TrackResult& result, const StageClock& clock) {
  const std::vector<PairResult> moving = movingPairs(result.pairs);
  const double work = clock.seconds("features") + clock.seconds("descriptors") + clock.seconds("matching");
  std::vector<ReportFact> list = {{"Frames", fmt::format("{}", result.frames.size()), sizeText(result) + " px"},
                                  fact("Features per frame", Spread(result.featureCounts(), "{:.0f}"), "")};
  for (const std::size_t i : {4, 5}) {
    const PairNumber& test = testNumbers()[i];
    list.push_back(fact(i == 4 ? "Matches" : "Inliers", Spread(numbersOf(result.pairs, test), test.format),
                        i == 4 ? "mode " + result.mode : ""));
  }
  if (const auto gain = totalGain(result.pairs)) {
    list.push_back({"Matches with prediction", fmt::format("{}", gain->matches),
                    fmt::format("{} without it, of the same frames", gain->matchesWithout)});
    list.push_back({"Prediction error, px", pixels(gain->error),
                    fmt::format("standing still: {}; medians", pixels(gain->errorOfStay))});
  }
  const char* labels[] = {"Image shift, px", "Rotation, deg", "Scale"};
  const char* notes[] = {"at the centre", "positive: clockwise", "above 1: growing"};
  for (std::size_t i = 0; i < 3; ++i) {
    const PairNumber& number = motionNumbers()[i];
    list.push_back(fact(labels[i], Spread(numbersOf(moving, number), number.format), notes[i]));
  }
  list.push_back({"Time per frame", fmt::format("{:.1f} ms", 1000 * work / static_cast<double>(result.frames.size())),
                  "features to matches"});
  return list;
}

json series(const TrackResult& result, const char* name, const std::function<double(const PairResult&)>& number) {
  return {{"name", name}, {"values", numbersOf(result.pairs, {"", "", number})}};
}

/// Gaps where there is no motion: JSON writes NaN as null.
json motionSeries(const TrackResult& result, const char* name, double ImageMotion::*number) {
  return series(result, name, [=](const PairResult& p) { return p.motion.valid ? p.motion.*number : std::nan(""); });
}

ReportChart predictionChart(const TrackResult& result, const json& labels) {
  json with = series(result, "predicted", [](const PairResult& p) { return p.matchCount; });
  json without = series(result, "every feature at its own position", [](const PairResult& p) {
    return p.prediction ? p.prediction->matchesWithout : p.matchCount;  // nothing is predicted for the first frame
  });
  without["dashed"] = true;
  return {"Matches with and without prediction", "frame", "count", labels, {with, without}};
}

std::vector<ReportChart> charts(const TrackResult& result) {
  if (result.pairs.size() < 2) return {};
  json labels = json::array();
  for (const PairResult& pair : result.pairs) labels.push_back(pair.to);
  const json shift = {motionSeries(result, "dx", &ImageMotion::dx), motionSeries(result, "dy", &ImageMotion::dy)};
  const json rotation = json::array({motionSeries(result, "rotation", &ImageMotion::rotation)});
  const json scale = json::array({motionSeries(result, "scale", &ImageMotion::scale)});
  json counts = json::array();
  for (const PairNumber& test : testNumbers()) {
    const std::string label = test.label;
    if (label == "in distance" || label == "matches" || label == "inliers") {
      counts.push_back(series(result, test.label, test.of));
    }
  }
  std::vector<ReportChart> list = {{"Image shift since the frame before", "frame", "px", labels, shift},
                                   {"Rotation since the frame before", "frame", "deg", labels, rotation},
                                   {"Scale since the frame before", "frame", "factor", labels, scale, false},
                                   {"Matches with the frame before", "frame", "count", labels, counts}};
  if (totalGain(result.pairs)) list.push_back(predictionChart(result, labels));
  return list;
}

ReportTable pairTable(const TrackResult& result) {
  ReportTable table{"Frame after frame", {"From", "To", "Features"}, {}};
  for (const PairNumber& test : testNumbers()) table.heads.push_back(test.label);
  for (const char* head : {"dx, px", "dy, px", "rotation, deg", "scale"}) table.heads.push_back(head);
  for (const PairResult& pair : result.pairs) {
    std::vector<std::string> row = {pair.nameFrom, pair.nameTo, fmt::format("{}", pair.counts.features1)};
    for (const PairNumber& test : testNumbers()) row.push_back(fmt::format("{}", test.of(pair)));
    const ImageMotion& m = pair.motion;
    for (const auto& [value, digits] : {std::pair{m.dx, 2}, {m.dy, 2}, {m.rotation, 3}, {m.scale, 4}}) {
      row.push_back(m.valid ? fmt::format("{:.{}f}", value, digits) : "-");
    }
    table.rows.push_back(std::move(row));
  }
  return table;
}

ReportTable predictionTable(const TrackResult& result) {
  ReportTable table{
      "Prediction",
      {"From", "To", "matches", "without prediction", "predicted by track", "error, px", "standing still, px"},
      {}};
  for (const PairResult& pair : result.pairs) {
    if (!pair.prediction) continue;
    const PredictionGain& gain = *pair.prediction;
    table.rows.push_back({pair.nameFrom, pair.nameTo, fmt::format("{}", gain.matches),
                          fmt::format("{}", gain.matchesWithout), fmt::format("{}", gain.tracked), pixels(gain.error),
                          pixels(gain.errorOfStay)});
  }
  return table;
}

std::vector<ReportTable> tables(const TrackResult& result) {
  std::vector<ReportTable> list = {pairTable(result)};
  if (totalGain(result.pairs)) list.push_back(predictionTable(result));
  return list;
}

}  // namespace

Report trackReport(const TrackResult& result, const StageClock& clock) {
  return {.command = "mirel track",
          .answer = result.pairs.size() == 1 ? judgeOnePair(result.pairs[0]) : judgeSequence(result),
          .facts = facts(result, clock),
          .pictures = {},
          .charts = charts(result),
          .tables = tables(result),
          .result = resultJson(result),
          .run = {}};
}

}  // namespace mirel
