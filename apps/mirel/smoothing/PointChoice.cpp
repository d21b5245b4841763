#include "smoothing/PointChoice.h"

#include "output/Summary.h"

#include <fmt/format.h>

#include <algorithm>

namespace mirel {

namespace {

std::string share(const PointChoice& choice, std::int64_t rows) {
  return fmt::format("{:.1f} %", 100.0 * static_cast<double>(rows) / static_cast<double>(choice.fates.size()));
}

/// The reason of most drops; kept when nothing was dropped.
Fate mainReason(const PointChoice& choice) {
  Fate most = Fate::kept;
  for (const Fate reason : choice.reasons()) {
    const std::int64_t rows = choice.count(reason);
    if (rows > (most == Fate::kept ? 0 : choice.count(most))) most = reason;
  }
  return most;
}

std::string mainReasonText(const PointChoice& choice) {
  const Fate reason = mainReason(choice);
  if (reason == Fate::kept) return "none were dropped";
  return fmt::format("most drops: {} ({} rows)", nameOf(reason).text, choice.count(reason));
}

/// What to change when the cells hold too little or too much; empty when they do not.
std::string cellAdvice(const PointChoice& choice) {
  const Fate reason = mainReason(choice);
  if (reason == Fate::smallCell) return "; a smaller smoothSparseMaxPts makes larger cells";
  if (reason == Fate::wideCell) return "; a larger smoothSparseMaxPts makes smaller cells";
  return {};
}

ReportAnswer judge(const PointChoice& choice) {
  const std::int64_t kept = choice.count(Fate::kept);
  if (!choice.enough) {
    return {"No result from " + choice.table, Verdict::bad, "No result: " + whyNothing(choice) + "."};
  }
  const std::string title = fmt::format("{} of {} points kept", kept, choice.fates.size());
  const std::string advice = cellAdvice(choice);
  constexpr double few = 0.1;
  if (!advice.empty() && static_cast<double>(kept) < few * static_cast<double>(choice.fates.size())) {
    return {title, Verdict::weak, fmt::format("Weak: {}{}.", mainReasonText(choice), advice)};
  }
  return {title, Verdict::good, fmt::format("Good: {} kept; {}.", share(choice, kept), mainReasonText(choice))};
}

std::string gridText(const PointChoice& choice) {
  const CellGrid grid = gridOver(choice.run.points, choice.run.mostPoints);
  if (!grid.isThere()) return "none, every point is alone";
  return fmt::format("{:.4g} x {:.4g}", grid.width, grid.height);
}

nlohmann::json gridJson(const PointChoice& choice) {
  const CellGrid grid = gridOver(choice.run.points, choice.run.mostPoints);
  if (!choice.run.hasGrid() || !grid.isThere()) return nullptr;
  return {{"x_px", grid.x}, {"y_px", grid.y}, {"width_px", grid.width}, {"height_px", grid.height}};
}

}  // namespace

std::string PointChoice::method() const {
  switch (run.method()) {
    case 0x2000:
      return "neighbourhood median";
    case 0x3000:
      return "grid, rows up to the mean";
    case 0x4000:
      return "grid, every second row up to the mean";
    case 0x5000:
    case 0x6000:
      return run.kept.size() > 1 ? fmt::format("one row in {}", run.kept[1]) : "one row in so many";
    default:
      return "copy";
  }
}

std::vector<Fate> PointChoice::reasons() const {
  std::vector<Fate> list = possibleReasons(run);
  if (count(Fate::unexplained) > 0) list.push_back(Fate::unexplained);
  return list;
}

PointChoice choosePoints(const cv::Mat& points, const Settings& settings) {
  PointChoice choice;
  const auto setting = [&](const char* key) { return settings.integer(key, pointOperation); };
  choice.run = {setting("smoothSparseMode"),
                setting("smoothSparseMaxPts"),
                setting("smoothSparseMinPts"),
                settings.container(),
                points,
                {}};
  choice.run.kept = keptRows(points, choice.run.settings, choice.enough);
  choice.fates = fatesOf(choice.run);
  return choice;
}

std::string whyNothing(const PointChoice& choice) {
  if (choice.run.points.rows < choice.run.leastPoints) {
    return fmt::format("{} rows given, at least {} expected (smoothSparseMinPts)", choice.run.points.rows,
                       choice.run.leastPoints);
  }
  return fmt::format("{} of {} points kept, at least {} expected (smoothSparseMinPts); {}{}", choice.run.kept.size(),
                     choice.fates.size(), choice.run.leastPoints, mainReasonText(choice), cellAdvice(choice));
}

nlohmann::json resultJson(const PointChoice& choice) {
  nlohmann::json dropped = nlohmann::json::object();
  for (const Fate reason : choice.reasons()) dropped[nameOf(reason).key] = choice.count(reason);
  return {{"schema", 1},
          {"command", "points"},
          {"table", choice.table},
          {"method", choice.method()},
          {"rows_in", choice.fates.size()},
          {"rows_kept", choice.run.kept.size()},
          {"rows_wanted", choice.run.leastPoints},
          {"enough", choice.enough},
          {"dropped", dropped},
          {"grid", gridJson(choice)}};
}

Report pointReport(const PointChoice& choice) {
  const std::int64_t kept = choice.count(Fate::kept);
  Report report = {.command = "mirel points",
                   .answer = judge(choice),
                   .facts = {{"Rows in", fmt::format("{}", choice.fates.size()), choice.table},
                             {"Kept", fmt::format("{}", kept), share(choice, kept)},
                             {"Dropped", fmt::format("{}", choice.fates.size() - kept), mainReasonText(choice)},
                             {"Method", choice.method(), fmt::format("smoothSparseMode 0x{:X}", choice.run.method())}},
                   .pictures = {},
                   .charts = {},
                   .tables = {{"What became of the rows", {"Rows", "Share", "Reason"}, {}}},
                   .result = resultJson(choice),
                   .run = {}};
  if (choice.run.hasGrid()) report.facts.push_back({"Cells", gridText(choice), "pixels"});
  const auto addRow = [&](Fate fate) {
    const std::int64_t rows = choice.count(fate);
    report.tables[0].rows.push_back({fmt::format("{}", rows), share(choice, rows), nameOf(fate).text});
  };
  addRow(Fate::kept);
  for (const Fate reason : choice.reasons()) addRow(reason);
  return report;
}

std::string summaryText(const PointChoice& choice) {
  std::string text = summaryLine("table", choice.table) + summaryLine("columns", choice.columns) +
                     summaryLine("method", choice.method()) +
                     summaryLine("rows in", fmt::format("{}", choice.fates.size()));
  if (choice.run.hasGrid()) text += summaryLine("cells", gridText(choice) + " px");
  const auto line = [&](const char* label, Fate fate) {
    const std::int64_t rows = choice.count(fate);
    const std::string reason = fate == Fate::kept ? "" : fmt::format(": {}", nameOf(fate).text);
    if (rows > 0 || fate == Fate::kept) {
      text += summaryLine(label, fmt::format("{} ({}){}", rows, share(choice, rows), reason));
    }
  };
  line("kept", Fate::kept);
  for (const Fate reason : choice.reasons()) line("dropped", reason);
  return text;
}

}  // namespace mirel
