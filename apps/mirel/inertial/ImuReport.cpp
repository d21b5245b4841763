#include "inertial/ImuReport.h"

#include "inertial/Rotation.h"
#include "output/Summary.h"

#include <MirelAlgorithms/filters/Butterworth.h>
#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace mirel {

namespace {

using nlohmann::json;

constexpr double degrees = 180 / CV_PI;
constexpr unsigned long long withheld = MirelAlgorithms::Butterworth::m_minUpdates;

template <class Flags>
std::size_t countOf(const Flags& flags) {
  return static_cast<std::size_t>(std::count(flags.begin(), flags.end(), 1));
}

/// Angles between estimated and measured gravity at rest, rad.
std::vector<double> gravityAngles(const ImuResult& result) {
  std::vector<double> angles;
  for (std::size_t i = 0; i < result.estimate.rest.size(); ++i) {
    if (result.estimate.rest[i] == 0) continue;
    angles.push_back(angleBetween(result.estimate.gravity[i], result.recording.accel[i]));
  }
  return angles;
}

json spreadJson(const std::vector<double>& angles) {
  const ErrorSpread spread = spreadOf(angles);
  return {{"rms_deg", spread.rms * degrees}, {"max_deg", spread.max * degrees}};
}

json vectorJson(const cv::Vec3f& v) { return {v[0], v[1], v[2]}; }

json columnsJson(const std::vector<ColumnUse>& columns) {
  json list = json::array();
  for (const ColumnUse& c : columns) {
    list.push_back({{"quantity", c.quantity},
                    {"column", c.number},
                    {"head", c.head},
                    {"unit", c.unit},
                    {"unit_from", c.unitFrom}});
  }
  return list;
}

json truthJson(const TruthComparison& truth) {
  return {{"samples", truth.compared}, {"attitude", spreadJson(truth.angle)}, {"gravity", spreadJson(truth.gravity)}};
}

std::string spreadText(const json& spread) {
  return fmt::format("{:.2f} deg RMS, {:.2f} deg at most", spread["rms_deg"].get<double>(),
                     spread["max_deg"].get<double>());
}

std::string share(std::size_t part, std::size_t whole) {
  return fmt::format("{:.1f} %", 100.0 * static_cast<double>(part) / static_cast<double>(whole));
}

std::string bandText(const ImuResult& result) {
  std::string text = fmt::format("{:.4g} to {:.4g} Hz", result.used.low, result.used.high);
  if (result.used.high < result.asked.high) {
    text += fmt::format(" ({:.4g} Hz is too near half the rate, lowered)", result.asked.high);
  }
  return text;
}

/// One of three columns and the unit of all of them.
std::string columnsText(const std::vector<ColumnUse>& columns, std::size_t first, std::size_t count) {
  std::string text;
  for (std::size_t i = first; i < first + count; ++i) {
    text += fmt::format("{}{}", text.empty() ? "" : ", ",
                        columns[i].head.empty() ? fmt::format("column {}", columns[i].number) : columns[i].head);
  }
  const ColumnUse& c = columns[first];
  return text + fmt::format(" in {} ({})", c.unit,
                            c.unitFrom == "head"     ? "as the head says"
                            : c.unitFrom == "option" ? "as the option says"
                                                     : "assumed");
}

ReportAnswer judge(const ImuResult& result, const json& numbers) {
  constexpr double goodSpread = 3;  // deg
  const Sampling sampling(result.recording.time.seconds);
  const std::string title = result.truth ? fmt::format("Attitude within {:.1f} deg of the truth (RMS)",
                                                       numbers["truth"]["attitude"]["rms_deg"].get<double>())
                                         : fmt::format("Attitude over {:.1f} s of {}", sampling.duration, result.name);
  std::string cause;
  if (!result.recording.warnings.empty()) {
    cause = result.recording.warnings[0];
  } else if (numbers["gravity"].is_null()) {
    cause = fmt::format(
        "the device is never at rest (rates stay above {:.3g} rad/s); the estimate could not be checked "
        "against gravity, nor speed be set back to zero",
        result.used.standstill);
  } else if (numbers["gravity"]["rms_deg"] > goodSpread) {
    cause = "at rest the estimated gravity differs from the measured one by " + spreadText(numbers["gravity"]);
  } else if (sampling.gaps > 0) {
    cause = "gaps in the recording: " + describeGaps(sampling);
  }
  if (!cause.empty()) return {title, Verdict::weak, "Weak: " + cause + "."};
  return {title, Verdict::good,
          "Good: at rest estimated and measured gravity differ by " + spreadText(numbers["gravity"]) + "."};
}

std::vector<ReportFact> facts(const ImuResult& result, const json& numbers) {
  const Sampling sampling(result.recording.time.seconds);
  const std::size_t samples = result.recording.gyro.size();
  std::vector<ReportFact> list = {
      {"Samples", fmt::format("{}", samples), fmt::format("{:.2f} s", sampling.duration)},
      {"Rate", fmt::format("{:.5g} per s", sampling.rate()), "median"},
      {"Gaps", fmt::format("{}", sampling.gaps),
       sampling.gaps == 0 ? "no step above 1.5 x the median" : fmt::format("longest {:.3g} s", sampling.longestGap)},
      {"At rest", share(countOf(result.estimate.rest), samples),
       fmt::format("threshold {:.3g} rad/s", result.used.standstill)}};
  const auto addSpread = [&](const char* label, const json& spread, const std::string& note) {
    list.push_back({label, fmt::format("{:.2f} deg", spread["rms_deg"].get<double>()),
                    fmt::format("RMS, {:.2f} deg at most; {}", spread["max_deg"].get<double>(), note)});
  };
  if (!numbers["gravity"].is_null()) addSpread("Gravity angle", numbers["gravity"], "estimated to measured, at rest");
  if (result.truth) {
    addSpread("Attitude error", numbers["truth"]["attitude"], "to the truth");
    addSpread("Gravity error", numbers["truth"]["gravity"], "to the truth");
  }
  list.push_back({"Band", fmt::format("{:.3g} to {:.3g} Hz", result.used.low, result.used.high),
                  fmt::format("first {} samples are 0", withheld)});
  return list;
}

ReportTable columnTable(const std::vector<ColumnUse>& columns) {
  ReportTable table{"Columns as they were read", {"Quantity", "Column", "Head", "Unit", "Unit from"}, {}};
  for (const ColumnUse& c : columns) {
    table.rows.push_back({c.quantity, fmt::format("{}", c.number), c.head, c.unit, c.unitFrom});
  }
  return table;
}

PlotPanel panelOf(const std::string& title, const std::string& unit, const std::vector<cv::Vec3f>& vectors) {
  PlotPanel panel{title, unit, {{"x", {}}, {"y", {}}, {"z", {}}}};
  for (const cv::Vec3f& v : vectors) {
    for (int i = 0; i < 3; ++i) panel.series[i].values.push_back(v[i]);
  }
  return panel;
}

/// Adds the angles of a rotation axis by axis; three gaps for one that is no number.
void addAngles(const cv::Vec4d& attitude, cv::Vec3d& last, PlotSeries* series) {
  cv::Vec3d angles = cv::Vec3d::all(attitude[3] * std::numeric_limits<double>::quiet_NaN());
  if (attitude[3] == attitude[3]) angles = last = anglesNear(attitude, last);
  for (int i = 0; i < 3; ++i) series[i].values.push_back(angles[i] * degrees);
}

PlotPanel anglePanel(const ImuResult& result) {
  PlotPanel panel{"Attitude as angles about x, y, z", "deg", {{"x", {}}, {"y", {}}, {"z", {}}}};
  cv::Vec3d last;
  for (const cv::Vec4f& q : result.estimate.attitude) addAngles(q, last, panel.series.data());
  if (!result.truth) return panel;
  panel.series.resize(6, {"truth", {}, true});
  last = {};
  for (const cv::Vec4d& q : result.truth->attitude) addAngles(q, last, panel.series.data() + 3);
  return panel;
}

std::vector<double> inDegrees(std::vector<double> angles) {
  for (double& angle : angles) angle *= degrees;
  return angles;
}

}  // namespace

json resultJson(const ImuResult& result) {
  const Sampling sampling(result.recording.time.seconds);
  const ImuEstimate& estimate = result.estimate;
  const bool rested = countOf(estimate.rest) > 0;
  const cv::Vec4f end = estimate.attitude.back();
  return {{"schema", 1},
          {"command", "imu"},
          {"recording", result.name},
          {"samples", result.recording.gyro.size()},
          {"duration_s", sampling.duration},
          {"rate_hz", sampling.rate()},
          {"gaps", {{"count", sampling.gaps}, {"longest_s", sampling.longestGap}}},
          {"columns", columnsJson(result.recording.columns)},
          {"warnings", result.recording.warnings},
          {"standstill_threshold_rad_s", result.used.standstill},
          {"standstill_samples", countOf(estimate.standstill)},
          {"rest_samples", countOf(estimate.rest)},
          {"rests", spans(result.recording.time.seconds, estimate.rest).size()},
          {"gravity_m_s2", estimate.weight},
          {"gravity", rested ? spreadJson(gravityAngles(result)) : json(nullptr)},
          {"band_hz", {result.used.low, result.used.high}},
          {"band_asked_hz", {result.asked.low, result.asked.high}},
          {"end",
           {{"q_xyzw", {end[0], end[1], end[2], end[3]}},
            {"speed_m_s", vectorJson(estimate.speed.back())},
            {"position_m", vectorJson(estimate.position.back())}}},
          {"truth", result.truth ? truthJson(*result.truth) : json(nullptr)}};
}

TimePlot timePlot(const ImuResult& result) {
  TimePlot plot{"time, s",
                result.recording.time.seconds,
                spans(result.recording.time.seconds, result.estimate.rest),
                "at rest",
                {anglePanel(result),
                 panelOf(fmt::format("Acceleration of the sensor, {:.3g} to {:.3g} Hz (the first {} samples are 0)",
                                     result.used.low, result.used.high, withheld),
                         "m/s2", result.estimate.filtered),
                 panelOf("Speed in the world", "m/s", result.estimate.speed)}};
  if (result.truth) {
    plot.panels.push_back(
        {"Error against the truth",
         "deg",
         {{"attitude", inDegrees(result.truth->angle)}, {"gravity direction", inDegrees(result.truth->gravity)}}});
  }
  return plot;
}

Report imuReport(const ImuResult& result, const json& numbers) {
  return {.command = "mirel imu",
          .answer = judge(result, numbers),
          .facts = facts(result, numbers),
          .pictures = {},
          .charts = {},
          .tables = {columnTable(result.recording.columns)},
          .result = numbers,
          .run = {}};
}

std::string summaryText(const ImuResult& result, const json& numbers) {
  const Sampling sampling(result.recording.time.seconds);
  const std::vector<ColumnUse>& columns = result.recording.columns;
  const std::size_t samples = result.recording.gyro.size();
  std::string text =
      summaryLine("recording", result.name) + summaryLine("time", columnsText(columns, 0, 1)) +
      summaryLine("gyro", columnsText(columns, 1, 3)) + summaryLine("accel", columnsText(columns, 4, 3)) +
      summaryLine("samples", fmt::format("{} over {:.3f} s, {}", samples, sampling.duration, describeRate(sampling))) +
      summaryLine("gaps", describeGaps(sampling)) +
      summaryLine("at rest", fmt::format("{} of the samples, {} {}", share(countOf(result.estimate.rest), samples),
                                         numbers["rests"].dump(), numbers["rests"] == 1 ? "rest" : "rests")) +
      summaryLine("gravity", numbers["gravity"].is_null() ? "never at rest, not compared"
                                                          : spreadText(numbers["gravity"]) +
                                                                fmt::format("; {:.3f} m/s2", result.estimate.weight));
  if (result.truth) {
    text += summaryLine("attitude", spreadText(numbers["truth"]["attitude"]) + " from the truth") +
            summaryLine("tilt", spreadText(numbers["truth"]["gravity"]) + " from the truth");
  }
  text += summaryLine("band", bandText(result));
  if (samples <= withheld) text += summaryLine("", fmt::format("nothing: more than {} samples needed", withheld));
  return text;
}

}  // namespace mirel
