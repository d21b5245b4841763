/// `mirel smooth`: smoothed columns of a table.
#include "Command.h"
#include "Errors.h"
#include "Session.h"
#include "inertial/ColumnHead.h"
#include "input/CsvTable.h"
#include "input/NotedInput.h"
#include "input/TimeColumn.h"
#include "output/Csv.h"
#include "output/Summary.h"
#include "output/TimeCharts.h"

#include <MirelAlgorithms/filters/SavitzkyGolay.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace mirel {

namespace {

struct SmoothedColumn {
  std::size_t column;
  std::string name;
  std::vector<double> before, after;
  double rmsChange = 0, largestChange = 0;
};

struct SmoothResult {
  std::string name;
  int window = 0;
  std::string axis = "sample";  ///< what `times` are: "time, s", "time" without known unit, or numbers of samples
  std::vector<double> times;
  std::vector<SmoothedColumn> smoothed;
  std::vector<std::string> copied;
};

std::string nameOf(const CsvTable& table, std::size_t column) {
  return table.heads()[column].empty() ? fmt::format("column {}", column + 1) : table.heads()[column];
}

bool isTime(const CsvTable& table, std::size_t column, ColumnHead& head) {
  return readHead(table.heads()[column], head) && head.quantity == Quantity::time;
}

/// Whether the first cell that is not empty is a number.
bool isNumeric(const CsvTable& table, std::size_t column) {
  double ignored = 0;
  for (std::size_t row = 0; row < table.rows(); ++row) {
    if (!table.cell(row, column).empty()) return parseNumber(table.cell(row, column), ignored);
  }
  return false;
}

std::vector<std::size_t> chooseColumns(const CsvTable& table, const std::string& list) {
  std::vector<std::size_t> columns;
  for (std::size_t i = 0; list.empty() && i < table.columns(); ++i) {
    ColumnHead head;
    if (isNumeric(table, i) && !isTime(table, i, head)) columns.push_back(i);
  }
  for (const std::string& part : list.empty() ? std::vector<std::string>() : splitList(list)) {
    columns.push_back(table.columnOf("--columns", part));
  }
  if (columns.empty()) throw UsageError(table.name() + ": no column of numbers beside the time");
  std::sort(columns.begin(), columns.end());
  columns.erase(std::unique(columns.begin(), columns.end()), columns.end());
  return columns;
}

void readAxis(const CsvTable& table, SmoothResult& result) {
  for (std::size_t i = 0; i < table.columns(); ++i) {
    ColumnHead head;
    if (!isTime(table, i, head) || !isNumeric(table, i)) continue;
    result.axis = head.unit.empty() ? "time" : "time, s";
    result.times = readTimes(table, i, head.unit.empty() ? "s" : head.unit).seconds;
    return;
  }
  for (std::size_t row = 0; row < table.rows(); ++row) result.times.push_back(static_cast<double>(row + 1));
}

std::vector<double> readColumn(const CsvTable& table, std::size_t column) {
  constexpr double largest = 1e300;  // sums of weighted samples stay below the end of double
  std::vector<double> values;
  for (std::size_t row = 0; row < table.rows(); ++row) values.push_back(table.number(row, column, largest));
  return values;
}

SmoothedColumn smoothColumn(const CsvTable& table, std::size_t column, int window) {
  SmoothedColumn result{column, nameOf(table, column), readColumn(table, column), {}};
  if (!MirelAlgorithms::sgCubicSmoother(result.before, result.after, window)) {
    throw UsageError(fmt::format("{}: {} samples, at least {} expected for a window of {} (--window)", table.name(),
                                 table.rows(), window / 2 + 2, window));
  }
  double sum = 0;
  for (std::size_t i = 0; i < result.before.size(); ++i) {
    const double change = std::abs(result.after[i] - result.before[i]);
    result.largestChange = std::max(result.largestChange, change);
    sum += change * change;
  }
  result.rmsChange = std::sqrt(sum / static_cast<double>(result.before.size()));
  return result;
}

void writeTable(const OutputFolder& folder, const CsvTable& table, const SmoothResult& result) {
  std::vector<std::string> heads;
  std::map<std::size_t, const SmoothedColumn*> smoothed;
  for (const SmoothedColumn& s : result.smoothed) smoothed[s.column] = &s;
  for (std::size_t i = 0; i < table.columns(); ++i) heads.push_back(csvCell(nameOf(table, i)));
  Csv csv(folder, "smoothed.csv", fmt::format("{}", fmt::join(heads, ",")));
  for (std::size_t row = 0; row < table.rows(); ++row) {
    std::string line;
    for (std::size_t i = 0; i < table.columns(); ++i) {
      if (i > 0) line += ',';
      const auto entry = smoothed.find(i);
      line += entry == smoothed.end() ? csvCell(table.cell(row, i)) : fmt::format("{}", entry->second->after[row]);
    }
    csv.row(line);
  }
  csv.close();
}

/// Fields are described in docs/imu-files.md.
nlohmann::json resultJson(const SmoothResult& result) {
  nlohmann::json columns = nlohmann::json::array();
  for (const SmoothedColumn& s : result.smoothed) {
    columns.push_back(
        {{"column", s.column + 1}, {"name", s.name}, {"rms_change", s.rmsChange}, {"largest_change", s.largestChange}});
  }
  return {{"schema", 1},
          {"command", "smooth"},
          {"table", result.name},
          {"samples", result.times.size()},
          {"window", result.window},
          {"columns", columns},
          {"copied", result.copied}};
}

constexpr std::size_t mostPanels = 6;

/// Columns before and after, from one sample to another.
TimePlot timePlot(const SmoothResult& result, std::size_t begin, std::size_t end) {
  const auto part = [&](const std::vector<double>& values) {
    return std::vector<double>(values.begin() + static_cast<std::ptrdiff_t>(begin),
                               values.begin() + static_cast<std::ptrdiff_t>(end));
  };
  TimePlot plot{result.axis, part(result.times), {}, "", {}};
  for (std::size_t i = 0; i < std::min(mostPanels, result.smoothed.size()); ++i) {
    const SmoothedColumn& s = result.smoothed[i];
    plot.panels.push_back({s.name, "", {{"before", part(s.before)}, {"smoothed", part(s.after)}}});
  }
  return plot;
}

constexpr std::size_t detail = 300;  // samples in which single ones can be seen

/// The samples around the largest change of the first column.
TimePlot detailPlot(const SmoothResult& result) {
  const SmoothedColumn& s = result.smoothed[0];
  std::size_t largest = 0;
  for (std::size_t i = 0; i < s.before.size(); ++i) {
    if (std::abs(s.after[i] - s.before[i]) > std::abs(s.after[largest] - s.before[largest])) largest = i;
  }
  const std::size_t end = std::min(std::max(largest + detail / 2, detail), s.before.size());
  return timePlot(result, end - detail, end);
}

/// How evenly spaced the samples are; the smoother takes them as even.
std::string spacing(const SmoothResult& result) {
  if (result.axis == "sample") return "taken as evenly spaced";
  const Sampling sampling(result.times);
  const std::string rate = result.axis == "time" ? fmt::format("{:.5g} apart", sampling.step) : describeRate(sampling);
  return rate + (sampling.gaps == 0 ? ", no gaps" : fmt::format(", {} gaps", sampling.gaps));
}

Report smoothReport(const SmoothResult& result) {
  const bool even = result.axis == "sample" || Sampling(result.times).gaps == 0;
  Report report = {
      .command = "mirel smooth",
      .answer = {fmt::format(
                     "{} of {} smoothed",
                     result.smoothed.size() == 1 ? "One column" : fmt::format("{} columns", result.smoothed.size()),
                     result.name),
                 even ? Verdict::good : Verdict::weak,
                 even ? fmt::format("Good: {} samples, window of {}.", result.times.size(), result.window)
                      : fmt::format("Weak: the window of {} takes samples as evenly spaced, but they are not: {}.",
                                    result.window, spacing(result))},
      .facts = {{"Samples", fmt::format("{}", result.times.size()), spacing(result)},
                {"Window", fmt::format("{}", result.window), "samples"}},
      .pictures = {},
      .charts = {},
      .tables = {{"Change by smoothing", {"Column", "RMS", "Largest"}, {}}},
      .result = resultJson(result),
      .run = {}};
  for (const SmoothedColumn& s : result.smoothed) {
    report.tables[0].rows.push_back(
        {s.name, fmt::format("{:.4g}", s.rmsChange), fmt::format("{:.4g}", s.largestChange)});
  }
  return report;
}

std::string summaryText(const SmoothResult& result) {
  std::string text = summaryLine("table", result.name) +
                     summaryLine("samples", fmt::format("{}, {}", result.times.size(), spacing(result))) +
                     summaryLine("window", fmt::format("{}", result.window));
  for (const SmoothedColumn& s : result.smoothed) {
    text +=
        summaryLine("changed by", fmt::format("{:.4g} RMS, {:.4g} at most: {}", s.rmsChange, s.largestChange, s.name));
  }
  if (!result.copied.empty()) text += summaryLine("copied", fmt::format("{}", fmt::join(result.copied, ", ")));
  return text;
}

class SmoothCommand : public Command {
 public:
  void addOptions(CLI::App& app) override {
    app.add_option("table", file_, "a table of numbers, or - for standard input")->type_name("IN.csv");
    app.add_option("--window", window_, "samples that each smoothed one depends on: 5, 7, 9, ... 25")
        ->type_name("N")
        ->capture_default_str();
    app.add_option("--columns", columns_, "heads or numbers of the columns; by default all with numbers but the time")
        ->type_name("LIST");
    common_.addOutput(app);
  }

  int run(CLI::App& app) override {
    Session session(app, common_);
    if (file_.empty()) throw UsageError("no table given; a table of numbers expected");
    if (window_ < 5 || window_ > 25 || window_ % 2 == 0) {
      throw UsageError(fmt::format("--window: {} given, an odd number from 5 to 25 expected", window_));
    }
    std::vector<InputFile> inputs;
    const CsvTable table(file_, readInput(file_, tableFile, inputs));
    const SmoothResult result = session.clock().time("smoothing", [&] { return smooth(table); });
    show(session, table, result, inputs);
    return success;
  }

 private:
  SmoothResult smooth(const CsvTable& table) const {
    SmoothResult result;
    result.name = shownName(file_);
    result.window = window_;
    readAxis(table, result);
    const std::vector<std::size_t> columns = chooseColumns(table, columns_);
    for (const std::size_t column : columns) result.smoothed.push_back(smoothColumn(table, column, window_));
    for (std::size_t i = 0; i < table.columns(); ++i) {
      if (!std::binary_search(columns.begin(), columns.end(), i)) result.copied.push_back(nameOf(table, i));
    }
    return result;
  }

  static void show(Session& session, const CsvTable& table, const SmoothResult& result,
                   const std::vector<InputFile>& inputs) {
    writeTable(session.folder(), table, result);
    Report report = smoothReport(result);
    std::vector<std::string> lines = {report.answer.title, fmt::format("window of {} samples", result.window)};
    if (result.smoothed.size() > mostPanels) lines[1] += fmt::format(", the first {} columns shown", mostPanels);
    const TimePlot plot = timePlot(result, 0, result.times.size());
    const cv::Mat picture = drawTimePlot(plot, lines);
    session.folder().writePicture("smooth.png", picture);
    addTimePlot(report, plot, picture);
    if (result.times.size() > 2 * detail) addDetail(session, report, result);
    const std::string files = summaryLine("smoothed", session.folder().shownPath("smoothed.csv")) +
                              summaryLine("picture", session.folder().shownPath("smooth.png"));
    session.finish(report, inputs, summaryText(result) + files);
  }

  static void addDetail(Session& session, Report& report, const SmoothResult& result) {
    const std::string caption =
        fmt::format("{} samples around the largest change of {}", detail, result.smoothed[0].name);
    const cv::Mat picture = drawTimePlot(detailPlot(result), {caption});
    session.folder().writePicture("smooth_detail.png", picture);
    report.pictures.push_back({caption, reportJpeg(picture)});
  }

  RunOptions common_;
  std::string file_, columns_;
  int window_ = 11;
};

const CommandRegistration<SmoothCommand> registration(
    "smooth", "smooth the columns of a table",
    {"mirel smooth series.csv --window 15 --out out/smooth",
     "mirel smooth recording.csv --columns gyro_x_rad_s,gyro_y_rad_s,gyro_z_rad_s --json"});

}  // namespace

}  // namespace mirel
