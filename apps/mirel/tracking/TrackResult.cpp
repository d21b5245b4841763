#include "tracking/TrackResult.h"

#include "Session.h"
#include "pictures/MatchPicture.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <functional>

namespace mirel {

namespace {

using nlohmann::json;
using PairNumber = std::function<double(const PairResult&)>;

struct Quantity {
  const char* label;
  PairNumber number;
};

/// Features left after each test, in order.
const std::vector<Quantity>& tests() {
  static const std::vector<Quantity> list = {
      {"in circle", [](const PairResult& p) { return p.counts.inCircle; }},
      {"in distance", [](const PairResult& p) { return p.counts.withinDistance; }},
      {"ratio test", [](const PairResult& p) { return p.counts.ratioTest; }},
      {"backward test", [](const PairResult& p) { return p.counts.backwardTest; }},
      {"matches", [](const PairResult& p) { return p.matchCount; }},
      {"inliers", [](const PairResult& p) { return p.inliers; }},
  };
  return list;
}

double shift(const PairResult& pair) { return std::hypot(pair.motion.dx, pair.motion.dy); }

std::vector<double> sorted(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values;
}

double median(std::vector<double> values) {
  if (values.empty()) return 0;
  const std::vector<double> order = sorted(std::move(values));
  return order[order.size() / 2];
}

std::vector<double> valuesOf(const std::vector<PairResult>& pairs, const PairNumber& number) {
  std::vector<double> values;
  for (const PairResult& pair : pairs) values.push_back(number(pair));
  return values;
}

std::vector<PairResult> withMotion(const TrackResult& result) {
  std::vector<PairResult> pairs;
  std::copy_if(result.pairs.begin(), result.pairs.end(), std::back_inserter(pairs),
               [](const PairResult& pair) { return pair.motion.valid; });
  return pairs;
}

/// "12", or "12 (3 to 40)" for median and range of several values.
std::string spread(const std::vector<double>& values, const char* format) {
  if (values.empty()) return "-";
  const auto text = [&](double value) { return fmt::format(fmt::runtime(format), value); };
  const std::vector<double> order = sorted(values);
  if (order.size() == 1) return text(order[0]);
  return fmt::format("{} ({} to {})", text(median(values)), text(order.front()), text(order.back()));
}

std::vector<double> featureCounts(const TrackResult& result) {
  std::vector<double> counts;
  for (const TrackedFrame& frame : result.frames) counts.push_back(frame.features);
  return counts;
}

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
  if (!pair.matched) object["reason"] = pair.reason;
  return object;
}

std::string frameRange(const TrackResult& result) {
  return fmt::format("{} ({} to {}, {} x {} px)", result.frames.size(), result.frames.front().name,
                     result.frames.back().name, result.frameSize.width, result.frameSize.height);
}

const PairResult* firstUnmatched(const TrackResult& result) {
  const auto pair = std::find_if(result.pairs.begin(), result.pairs.end(), [](const auto& p) { return !p.matched; });
  return pair == result.pairs.end() ? nullptr : &*pair;
}

void judgeOnePair(const PairResult& pair, Report& report) {
  report.title = pair.matched ? fmt::format("{} matches", pair.matchCount) : "No match";
  if (pair.motion.valid && pair.matched) report.title += fmt::format(", image moved by {:.2f} px", shift(pair));
  if (!pair.matched) {
    report.verdict = Verdict::bad;
    report.sentence = pair.reason;
    return;
  }
  const bool good = 2 * pair.inliers >= pair.matchCount;
  report.verdict = good ? Verdict::good : Verdict::weak;
  report.sentence = fmt::format("{}: {} of {} matches agree with one image motion{}.", good ? "Good" : "Weak",
                                pair.inliers, pair.matchCount,
                                good ? "" : "; different depths, moving things or repeated texture can be the cause");
}

void judgeSequence(const TrackResult& result, Report& report) {
  const int matched = result.matchedPairs(), pairs = static_cast<int>(result.pairs.size());
  const double share = median(valuesOf(result.pairs, [](const PairResult& p) {
    return p.matchCount == 0 ? 0 : static_cast<double>(p.inliers) / p.matchCount;
  }));
  report.title = fmt::format("{} of {} frame pairs matched", matched, pairs);
  report.verdict = matched == 0 ? Verdict::bad : matched == pairs && share >= 0.5 ? Verdict::good : Verdict::weak;
  if (const PairResult* pair = firstUnmatched(result)) {
    report.sentence = fmt::format("{}: no match from {} to {}: {}", matched == 0 ? "No result" : "Weak", pair->nameFrom,
                                  pair->nameTo, pair->reason);
  } else {
    report.sentence = fmt::format(
        "{}: in the median pair {:.0f} % of the matches agree with one image motion; the "
        "longest track has {} of {} frames.",
        share >= 0.5 ? "Good" : "Weak", 100 * share, result.longestTrack, pairs + 1);
  }
}

std::vector<ReportFact> facts(const TrackResult& result, const StageClock& clock) {
  const std::vector<PairResult> moving = withMotion(result);
  const char* note = result.pairs.size() > 1 ? "median (smallest to largest)" : "";
  const double frames = static_cast<double>(result.frames.size());
  const double work = clock.seconds("features") + clock.seconds("descriptors") + clock.seconds("matching");
  const auto of = [&](const char* format, const PairNumber& number) {
    return spread(valuesOf(moving, number), format);
  };
  return {{"Frames", fmt::format("{}", result.frames.size()),
           fmt::format("{} x {} px, mode {}", result.frameSize.width, result.frameSize.height, result.mode)},
          {"Features", spread(featureCounts(result), "{:.0f}"), "per frame"},
          {"Matches", spread(valuesOf(result.pairs, tests()[4].number), "{:.0f}"), note},
          {"Inliers", spread(valuesOf(result.pairs, tests()[5].number), "{:.0f}"), note},
          {"Image shift, px", of("{:.2f}", shift), "at the image centre"},
          {"Rotation, deg", of("{:.3f}", [](const PairResult& p) { return p.motion.rotation; }), "positive: clockwise"},
          {"Scale", of("{:.4f}", [](const PairResult& p) { return p.motion.scale; }), "above 1: the picture grows"},
          {"Time per frame", fmt::format("{:.1f} ms", 1000 * work / frames), "features, descriptors, matching"}};
}

json seriesValues(const TrackResult& result, const PairNumber& number) {
  json values = json::array();
  for (const PairResult& pair : result.pairs) values.push_back(number(pair));
  return values;
}

PairNumber ofMotion(const PairNumber& number) {
  return [number](const PairResult& pair) { return pair.motion.valid ? number(pair) : std::nan(""); };
}

std::vector<ReportChart> charts(const TrackResult& result) {
  if (result.pairs.size() < 2) return {};
  json labels = json::array();
  for (const PairResult& pair : result.pairs) labels.push_back(pair.to);
  const auto series = [&](const char* name, const PairNumber& number) {
    return json{{"name", name}, {"values", seriesValues(result, number)}};
  };
  const auto dx = ofMotion([](const PairResult& p) { return p.motion.dx; });
  const auto dy = ofMotion([](const PairResult& p) { return p.motion.dy; });
  const auto rotation = ofMotion([](const PairResult& p) { return p.motion.rotation; });
  const auto scale = ofMotion([](const PairResult& p) { return p.motion.scale; });
  const char* x = "frame";
  return {{"Image shift since the frame before", x, "px", labels, json::array({series("dx", dx), series("dy", dy)})},
          {"Rotation since the frame before", x, "deg", labels, json::array({series("rotation", rotation)})},
          {"Scale since the frame before", x, "factor", labels, json::array({series("scale", scale)}), false},
          {"Matches", x, "count", labels,
           json::array({series("in circle", tests()[0].number), series("matches", tests()[4].number),
                        series("inliers", tests()[5].number)})}};
}

ReportTable pairTable(const TrackResult& result) {
  ReportTable table{"Frame after frame", {"Frame", "To frame", "Features"}, {}};
  for (const Quantity& test : tests()) table.heads.push_back(test.label);
  for (const char* head : {"dx, px", "dy, px", "Rotation, deg", "Scale"}) table.heads.push_back(head);
  for (const PairResult& pair : result.pairs) {
    std::vector<std::string> row = {pair.nameFrom, pair.nameTo, fmt::format("{}", pair.counts.features1)};
    for (const Quantity& test : tests()) row.push_back(fmt::format("{}", test.number(pair)));
    const ImageMotion& motion = pair.motion;
    for (const auto& [value, digits] :
         {std::pair{motion.dx, 2}, {motion.dy, 2}, {motion.rotation, 3}, {motion.scale, 4}}) {
      row.push_back(motion.valid ? fmt::format("{:.{}f}", value, digits) : "-");
    }
    table.rows.push_back(std::move(row));
  }
  return table;
}

}  // namespace

int TrackResult::matchedPairs() const {
  return static_cast<int>(std::count_if(pairs.begin(), pairs.end(), [](const auto& pair) { return pair.matched; }));
}

json resultJson(const TrackResult& result) {
  json frames = json::array(), pairs = json::array();
  for (const TrackedFrame& frame : result.frames) {
    frames.push_back({{"frame", frame.number}, {"name", frame.name}, {"features", frame.features}});
  }
  for (const PairResult& pair : result.pairs) pairs.push_back(pairJson(pair));
  return {{"schema", 1},
          {"command", "track"},
          {"mode", result.mode},
          {"width_px", result.frameSize.width},
          {"height_px", result.frameSize.height},
          {"frames", frames},
          {"pairs", pairs},
          {"matched_pairs", result.matchedPairs()},
          {"longest_track_frames", result.longestTrack}};
}

std::string summaryText(const TrackResult& result, const StageClock& clock) {
  std::string text = summaryLine("frames", frameRange(result));
  text += summaryLine("features", spread(featureCounts(result), "{:.0f}") + " per frame");
  for (const Quantity& test : tests()) {
    text += summaryLine(test.label, spread(valuesOf(result.pairs, test.number), "{:.0f}"));
  }
  if (result.pairs.size() == 1) {
    text += summaryLine("motion", describeMotion(result.pairs[0].motion));
  } else {
    const std::vector<PairResult> moving = withMotion(result);
    const auto of = [&](const char* format, const PairNumber& n) { return spread(valuesOf(moving, n), format); };
    text += summaryLine("shift", of("{:.2f}", shift) + " px");
    text += summaryLine("rotation", of("{:.3f}", [](const PairResult& p) { return p.motion.rotation; }) + " deg");
    text += summaryLine("scale", of("{:.4f}", [](const PairResult& p) { return p.motion.scale; }));
    text += summaryLine("pairs", fmt::format("{} of {} matched, longest track {} frames", result.matchedPairs(),
                                             result.pairs.size(), result.longestTrack));
  }
  return text + summaryLine("time", describeStages(clock));
}

Report trackReport(const TrackResult& result, const StageClock& clock) {
  Report report;
  report.command = "mirel track";
  if (result.pairs.size() == 1) {
    judgeOnePair(result.pairs[0], report);
  } else {
    judgeSequence(result, report);
  }
  report.facts = facts(result, clock);
  report.charts = charts(result);
  report.tables = {pairTable(result)};
  report.result = resultJson(result);
  return report;
}

}  // namespace mirel
