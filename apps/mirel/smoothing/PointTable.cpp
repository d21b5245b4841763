#include "smoothing/PointTable.h"

#include "output/Csv.h"
#include "views/PoseFile.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <optional>

namespace mirel {

namespace {

constexpr std::size_t wanted = 5;

/// What the columns may be called; the first names are those that are written.
const std::array<std::vector<std::string>, wanted> knownHeads = {
    {{"x_px", "u_px", "u"}, {"y_px", "v_px", "v"}, {"x_m", "x", "X"}, {"y_m", "y", "Y"}, {"z_m", "z", "Z"}}};

/// Which of the five a head means.
std::optional<std::size_t> meaningOf(const std::string& head) {
  for (std::size_t i = 0; i < wanted; ++i) {
    if (std::find(knownHeads[i].begin(), knownHeads[i].end(), head) != knownHeads[i].end()) return i;
  }
  return std::nullopt;
}

std::vector<std::size_t> listedColumns(const CsvTable& table, const std::string& list) {
  const std::vector<std::string> parts = splitList(list);
  if (parts.size() != wanted) {
    throw UsageError(
        fmt::format("--columns: {} columns given, {} expected: x_px, y_px, x_m, y_m, z_m", parts.size(), wanted));
  }
  std::vector<std::size_t> columns;
  columns.reserve(parts.size());
  for (const std::string& part : parts) columns.push_back(table.columnOf("--columns", part));
  return columns;
}

/// By their heads; in order where none of the first five has a head that means another one of the five.
std::vector<std::size_t> knownColumns(const CsvTable& table) {
  std::array<std::optional<std::size_t>, wanted> found;
  bool inOrder = table.columns() >= wanted;
  for (std::size_t i = 0; i < table.columns(); ++i) {
    const std::optional<std::size_t> meaning = meaningOf(table.heads()[i]);
    if (!meaning) continue;
    inOrder = inOrder && *meaning == i;
    if (!found[*meaning]) found[*meaning] = i;
  }
  std::vector<std::size_t> columns;
  for (std::size_t i = 0; i < wanted; ++i) {
    if (!found[i] && inOrder) found[i] = i;
    if (found[i]) columns.push_back(*found[i]);
    if (found[i]) continue;
    if (!table.hasHeads()) {
      throw UsageError(
          fmt::format("{}: {} columns, at least 5 expected: x_px, y_px, x_m, y_m, z_m", table.name(), table.columns()));
    }
    throw UsageError(fmt::format("{}: no column {}; heads x_px, y_px, x_m, y_m, z_m expected, or --columns",
                                 table.headPlace(), knownHeads[i][0]));
  }
  return columns;
}

}  // namespace

PointTable::PointTable(const CsvTable& csv, const std::string& list)
    : table(csv),
      columns(list.empty() ? knownColumns(csv) : listedColumns(csv, list)),
      points(static_cast<int>(csv.rows()), wanted, CV_32FC1) {
  for (int row = 0; row < points.rows; ++row) {
    for (std::size_t i = 0; i < wanted; ++i) {
      points.at<float>(row, static_cast<int>(i)) =
          static_cast<float>(csv.number(static_cast<std::size_t>(row), columns[i], farthest));
    }
  }
}

std::string PointTable::columnsText() const {
  std::vector<std::size_t> numbers;
  for (const std::size_t column : columns) numbers.push_back(column + 1);
  return fmt::format("{} taken as x_px, y_px, x_m, y_m, z_m", fmt::join(numbers, ", "));
}

std::vector<std::string> PointTable::headsWithUnits() const {
  std::vector<std::string> heads = table.heads();
  for (std::size_t i = 0; i < wanted; ++i) {
    std::string& head = heads[columns[i]];
    if (head.empty() || meaningOf(head) == i) head = knownHeads[i][0];
  }
  for (std::size_t i = 0; i < heads.size(); ++i) {
    if (heads[i].empty()) heads[i] = fmt::format("column {}", i + 1);
    heads[i] = csvCell(heads[i]);
  }
  return heads;
}

void PointTable::write(const StagedFile& file, const std::string& shown, const std::vector<int>& rows) const {
  Csv csv(file, shown, fmt::format("{}", fmt::join(headsWithUnits(), ",")));
  for (const int row : rows) {
    std::string line;
    for (std::size_t i = 0; i < table.columns(); ++i) {
      if (i > 0) line += ',';
      line += csvCell(table.cell(static_cast<std::size_t>(row), i));
    }
    csv.row(line);
  }
  csv.close();
}

}  // namespace mirel
