#include "input/CsvTable.h"

#include "options/NearestName.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace mirel {

namespace {

constexpr std::size_t mostColumns = 10'000;  // a file without line ends is no table
constexpr std::string_view blanks = " \t\r\v\f";

std::string_view trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(blanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

std::string_view takeLine(std::string_view& rest) {
  const std::size_t end = rest.find('\n');
  const std::string_view line = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return line;
}

/// A cell as messages show it.
std::string shown(std::string_view cell) {
  constexpr std::size_t most = 40;
  return "'" + std::string(cell.substr(0, most)) + (cell.size() > most ? "..." : "") + "'";
}

bool isText(std::string_view cell) {
  double ignored = 0;
  return !cell.empty() && !parseNumber(cell, ignored);
}

bool hasText(const std::vector<std::string_view>& row) { return std::any_of(row.begin(), row.end(), isText); }

char separatorOf(std::string_view line) {
  std::string bare;  // without what stands in quotes
  bool quoted = false;
  for (const char c : line) {
    if (c == '"') quoted = !quoted;
    if (!quoted) bare += c;
  }
  for (const char separator : {';', '\t', ','}) {
    if (bare.find(separator) != std::string::npos) return separator;
  }
  return ' ';
}

/// End of the cell that starts the text; npos for quotes that are not closed.
std::size_t cellEnd(std::string_view text, char separator) {
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') quoted = !quoted;
    if (!quoted && text[i] == separator) return i;
  }
  return quoted ? std::string_view::npos : text.size();
}

std::string_view withoutQuotes(std::string_view cell) {
  const bool quoted = cell.size() >= 2 && cell.front() == '"' && cell.back() == '"';
  return quoted ? trimmed(cell.substr(1, cell.size() - 2)) : cell;
}

}  // namespace

bool parseNumber(std::string_view text, double& value) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end;
}

std::vector<std::string> splitList(const std::string& text) {
  std::vector<std::string> parts;
  std::string_view rest = text;
  while (true) {
    const std::size_t comma = rest.find(',');
    parts.emplace_back(trimmed(rest.substr(0, comma)));
    if (comma == std::string_view::npos) return parts;
    rest.remove_prefix(comma + 1);
  }
}

CsvTable::CsvTable(std::string name, std::string text) : name_(std::move(name)), text_(std::move(text)) {
  std::string_view rest = text_;
  if (rest.starts_with("\xFF\xFE") || rest.starts_with("\xFE\xFF")) {
    throw UsageError(name_ + ": text of 16 bits per character, UTF-8 expected");
  }
  if (rest.starts_with("\xEF\xBB\xBF")) rest.remove_prefix(3);
  std::string_view comment;
  std::size_t commentLine = 0;
  for (std::size_t line = 1; !rest.empty(); ++line) {
    const std::string_view whole = takeLine(rest), content = trimmed(whole);
    if (content.empty()) continue;
    if (content[0] == '#' || content[0] == '%') {
      if (columns_ == 0) {
        comment = content.substr(1);
        commentLine = line;
      }
      continue;
    }
    if (separator_ == 0) separator_ = separatorOf(content);
    // Where tabs separate, those at the ends of a line stand for empty cells.
    std::vector<std::string_view> row = split(separator_ == '\t' ? whole : content, line);
    if (columns_ > 0) {
      addRow(row, line);
      continue;
    }
    columns_ = row.size();
    hasHeads_ = hasText(row);
    heads_.assign(row.begin(), row.end());
    headLine_ = line;
    if (hasHeads_) continue;
    const std::vector<std::string_view> before = split(trimmed(comment), line);
    hasHeads_ = before.size() == columns_ && hasText(before);
    heads_.assign(columns_, "");
    if (hasHeads_) heads_.assign(before.begin(), before.end());
    headLine_ = commentLine;
    addRow(row, line);
  }
  if (rows() == 0) throw UsageError(name_ + ": no row of numbers in it");
}

std::vector<std::string_view> CsvTable::split(std::string_view line, std::size_t number) const {
  std::vector<std::string_view> cells;
  while (true) {
    const std::size_t end = cellEnd(line, separator_);
    if (end == std::string_view::npos) {
      throw UsageError(fmt::format("{}:{}: quotes that are not closed on the line", name_, number));
    }
    if (cells.size() == mostColumns) {
      throw UsageError(fmt::format("{}:{}: more than {} cells, fewer expected", name_, number, mostColumns));
    }
    cells.push_back(withoutQuotes(trimmed(line.substr(0, end))));
    if (end == line.size()) return cells;
    line.remove_prefix(end + 1);
    if (separator_ == ' ') line.remove_prefix(std::min(line.size(), line.find_first_not_of(blanks)));
  }
}

void CsvTable::addRow(std::vector<std::string_view>& row, std::size_t line) {
  while (row.size() > columns_ && row.back().empty()) row.pop_back();
  if (row.size() != columns_) {
    throw UsageError(
        fmt::format("{}:{}: {} cells, {} expected as in the first row", name_, line, row.size(), columns_));
  }
  cells_.insert(cells_.end(), row.begin(), row.end());
  lines_.push_back(line);
}

double CsvTable::number(std::size_t row, std::size_t column) const {
  const std::string_view text = cell(row, column);
  double value = 0;
  if (parseNumber(text, value) && std::isfinite(value)) return value;
  throw errorAt(row, fmt::format("{}: {} given, a finite number expected, such as -0.5 or 2e-3", describe(column),
                                 text.empty() ? "nothing" : shown(text)));
}

double CsvTable::number(std::size_t row, std::size_t column, double most) const {
  const double value = number(row, column);
  if (std::abs(value) <= most) return value;
  throw errorAt(
      row, fmt::format("{}: {:g} given, a number from {:g} to {:g} expected", describe(column), value, -most, most));
}

std::size_t CsvTable::columnOf(const std::string& option, const std::string& text) const {
  const auto matches = std::count(heads_.begin(), heads_.end(), text);
  if (hasHeads_ && matches > 1) {
    throw UsageError(
        fmt::format("{}: {} columns of {} are called '{}'; their numbers tell which", option, matches, name_, text));
  }
  if (hasHeads_ && matches == 1) return std::find(heads_.begin(), heads_.end(), text) - heads_.begin();
  std::size_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  const bool isNumber = error == std::errc() && stop == end;
  if (isNumber && number >= 1 && number <= columns_) return number - 1;
  throw UsageError(fmt::format("{}: {} has no column '{}'; a head or a number from 1 to {} expected{}", option, name_,
                               text, columns_, isNumber ? "" : didYouMean(text, heads_)));
}

std::string CsvTable::describe(std::size_t column) const {
  const std::string number = fmt::format("column {}", column + 1);
  return heads_[column].empty() ? number : number + " (" + heads_[column] + ")";
}

std::string CsvTable::headPlace() const { return fmt::format("{}:{}", name_, headLine_); }

UsageError CsvTable::errorAt(std::size_t row, const std::string& text) const {
  return UsageError(fmt::format("{}:{}: {}", name_, lines_[row], text));
}

}  // namespace mirel
