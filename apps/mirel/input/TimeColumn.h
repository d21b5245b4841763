/// Time stamps of a recording.
#pragma once

#include "input/CsvTable.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mirel {

/// A number also in two parts, so that nanoseconds since 1970 and seconds since then with nine decimals lose nothing.
struct TimeStamp {
  double value = 0;
  std::int64_t whole = 0;
  double fraction = 0;

  /// The time since `earlier`, in the unit of both.
  double since(const TimeStamp& earlier) const;
};

/// How many of the unit, "s", "ms", "us" or "ns", are a second.
double perSecond(const std::string& unit);

struct Times {
  TimeStamp first;
  std::vector<double> seconds;  ///< since the first stamp, or since the origin that was given
};

/// Reads a column of ascending time stamps; throws `UsageError` for text, and for stamps that are not after the one
/// before.
///
/// @param origin  what to count from; null: the first stamp
Times readTimes(const CsvTable& table, std::size_t column, const std::string& unit, const TimeStamp* origin = nullptr);

/// How evenly a recording is sampled.
struct Sampling {
  /// @param seconds  ascending, two at least
  explicit Sampling(const std::vector<double>& seconds);

  double step;                              ///< median time between samples, s
  double duration;                          ///< from the first to the last sample, s
  std::size_t gaps = 0;                     ///< steps of more than 1.5 times the median
  double longestGap = 0;                    ///< s
  double rate() const { return 1 / step; }  ///< samples per second
};

/// "100 per second (median)".
std::string describeRate(const Sampling& sampling);

/// "none", or how many and how long.
std::string describeGaps(const Sampling& sampling);

}  // namespace mirel
