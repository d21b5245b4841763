#include "input/TimeColumn.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace mirel {

namespace {

TimeStamp readStamp(const CsvTable& table, std::size_t row, std::size_t column) {
  TimeStamp stamp;
  stamp.value = table.number(row, column);
  const std::string_view text = table.cell(row, column);
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, stamp.whole);
  if (error == std::errc() && stop == end) return stamp;
  if (error == std::errc() && *stop == '.') {
    const auto [last, wrong] = std::from_chars(stop, end, stamp.fraction, std::chars_format::fixed);
    if (text[0] == '-') stamp.fraction = -stamp.fraction;
    if (wrong == std::errc() && last == end) return stamp;
  }
  constexpr double limit = 9e18;  // of 64-bit integers
  if (std::abs(stamp.value) > limit)
    throw table.errorAt(row, table.describe(column) + ": out of the range of time stamps");
  stamp.whole = static_cast<std::int64_t>(stamp.value);
  stamp.fraction = stamp.value - static_cast<double>(stamp.whole);
  return stamp;
}

}  // namespace

double TimeStamp::since(const TimeStamp& earlier) const {
  constexpr double small = 1e6;  // up to here a double has ten decimals
  if (std::abs(value) <= small && std::abs(earlier.value) <= small) return value - earlier.value;
  // The difference of two 64-bit integers needs 65 bits.
  const auto a = static_cast<std::uint64_t>(whole), b = static_cast<std::uint64_t>(earlier.whole);
  const double difference = whole >= earlier.whole ? static_cast<double>(a - b) : -static_cast<double>(b - a);
  return difference + (fraction - earlier.fraction);
}

double perSecond(const std::string& unit) {
  if (unit == "ms") return 1e3;
  if (unit == "us") return 1e6;
  return unit == "ns" ? 1e9 : 1;
}

Times readTimes(const CsvTable& table, std::size_t column, const std::string& unit, const TimeStamp* origin) {
  const double second = perSecond(unit);
  Times times;
  TimeStamp last;
  for (std::size_t row = 0; row < table.rows(); ++row) {
    const TimeStamp stamp = readStamp(table, row, column);
    if (row == 0) times.first = stamp;
    if (row > 0 && !(stamp.since(last) / second > 0)) {
      throw table.errorAt(row,
                          fmt::format("{}: time stamp {} after {}, ascending ones expected", table.describe(column),
                                      table.cell(row, column), table.cell(row - 1, column)));
    }
    times.seconds.push_back(stamp.since(origin != nullptr ? *origin : times.first) / second);
    last = stamp;
  }
  return times;
}

Sampling::Sampling(const std::vector<double>& seconds) : duration(seconds.back() - seconds.front()) {
  std::vector<double> steps;
  for (std::size_t i = 1; i < seconds.size(); ++i) steps.push_back(seconds[i] - seconds[i - 1]);
  const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2);
  std::nth_element(steps.begin(), middle, steps.end());
  step = *middle;
  for (const double s : steps) {
    if (s <= 1.5 * step) continue;
    ++gaps;
    longestGap = std::max(longestGap, s);
  }
}

std::string describeRate(const Sampling& sampling) { return fmt::format("{:.5g} per second", sampling.rate()); }

std::string describeGaps(const Sampling& sampling) {
  if (sampling.gaps == 0) return "none";
  return fmt::format("{}, the longest {:.3g} s", sampling.gaps, sampling.longestGap);
}

}  // namespace mirel
