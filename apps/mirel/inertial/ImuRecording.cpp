#include "inertial/ImuRecording.h"

#include "inertial/ColumnHead.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/core/matx.hpp>
#include <span>

namespace mirel {

namespace {

/// A column that is looked for.
struct Wanted {
  Quantity quantity;
  char axis;
  const char* name;
};

constexpr std::array imuColumns = {Wanted{Quantity::time, 0, "time"},       Wanted{Quantity::gyro, 'x', "gyro x"},
                                   Wanted{Quantity::gyro, 'y', "gyro y"},   Wanted{Quantity::gyro, 'z', "gyro z"},
                                   Wanted{Quantity::accel, 'x', "accel x"}, Wanted{Quantity::accel, 'y', "accel y"},
                                   Wanted{Quantity::accel, 'z', "accel z"}};
constexpr std::array attitudeColumns = {
    Wanted{Quantity::time, 0, "time"}, Wanted{Quantity::attitude, 'x', "quaternion x"},
    Wanted{Quantity::attitude, 'y', "quaternion y"}, Wanted{Quantity::attitude, 'z', "quaternion z"},
    Wanted{Quantity::attitude, 'w', "quaternion w"}};

/// The one column whose head fits; throws `UsageError` for none and for several.
std::size_t findColumn(const CsvTable& table, const Wanted& wanted, const std::string& hint) {
  std::vector<std::size_t> found;
  for (std::size_t i = 0; i < table.columns(); ++i) {
    ColumnHead head;
    if (readHead(table.heads()[i], head) && head.quantity == wanted.quantity && head.axis == wanted.axis) {
      found.push_back(i);
    }
  }
  if (found.size() == 1) return found[0];
  if (found.empty()) {
    throw UsageError(fmt::format("{}: no column for {} among the heads {}{}", table.headPlace(), wanted.name,
                                 fmt::join(table.heads(), ", "), hint));
  }
  throw UsageError(fmt::format("{}: {} and {} both look like {}{}", table.headPlace(), table.describe(found[0]),
                               table.describe(found[1]), wanted.name, hint));
}

std::vector<std::size_t> findColumns(const CsvTable& table, std::span<const Wanted> wanted, const std::string& hint) {
  if (!table.hasHeads()) throw UsageError(table.name() + ": no heads over its columns" + hint);
  std::vector<std::size_t> columns;
  for (const Wanted& w : wanted) columns.push_back(findColumn(table, w, hint));
  return columns;
}

std::vector<std::size_t> chosenColumns(const CsvTable& table, const std::string& list) {
  const std::vector<std::string> parts = splitList(list);
  if (parts.size() != imuColumns.size()) {
    throw UsageError(
        fmt::format("--columns: {} given, seven expected: time, gyro x, y, z, accel x, y, z", parts.size()));
  }
  std::vector<std::size_t> columns;
  for (const std::string& part : parts) {
    const std::size_t column = table.columnOf("--columns", part);
    if (std::find(columns.begin(), columns.end(), column) != columns.end()) {
      throw UsageError("--columns: " + table.describe(column) + " given twice");
    }
    columns.push_back(column);
  }
  return columns;
}

struct Unit {
  std::string name, from;
};

/// The unit of columns of one quantity: that of the option, which must not contradict the heads, or that of the heads,
/// or else the first choice.
Unit unitOf(const CsvTable& table, std::span<const std::size_t> columns, Quantity quantity, const std::string& option,
            const std::string& value, const std::string& assumed) {
  Unit unit = value.empty() ? Unit{assumed, "assumed"} : Unit{value, "option"};
  for (const std::size_t column : columns) {
    ColumnHead head;
    if (!readHead(table.heads()[column], head) || head.quantity != quantity) continue;
    const std::string place = table.headPlace() + ": " + table.describe(column);
    if (!head.unknown.empty() && value.empty()) {
      throw UsageError(fmt::format("{}: unit {} not known; {} tells it", place, head.unknown, option));
    }
    if (head.unit.empty()) continue;
    if (unit.from != "assumed" && head.unit != unit.name) {
      throw UsageError(fmt::format("{}: in {}, but {} {}", place, head.unit,
                                   unit.from == "option" ? option : "the column before in", unit.name));
    }
    if (unit.from == "assumed") unit = {head.unit, "head"};
  }
  return unit;
}

/// Three columns as vectors, multiplied by the factor.
std::vector<cv::Vec3f> readVectors(const CsvTable& table, std::span<const std::size_t> columns, double factor) {
  constexpr double largest = 1e6;  // in SI units; no sensor gives more, and squares stay far from the ends of float
  std::vector<cv::Vec3f> vectors(table.rows());
  for (std::size_t row = 0; row < table.rows(); ++row) {
    for (int axis = 0; axis < 3; ++axis) {
      const double value = factor * table.number(row, columns[axis]);
      if (std::abs(value) > largest) {
        throw table.errorAt(row, fmt::format("{}: '{}' given, no sensor measures so much",
                                             table.describe(columns[axis]), table.cell(row, columns[axis])));
      }
      vectors[row][axis] = static_cast<float>(value);
    }
  }
  return vectors;
}

void addUse(ImuRecording& recording, const CsvTable& table, std::span<const std::size_t> columns, const Unit& unit) {
  for (const std::size_t column : columns) {
    recording.columns.push_back(
        {imuColumns[recording.columns.size()].name, column + 1, table.heads()[column], unit.name, unit.from});
  }
}

double medianLength(const std::vector<cv::Vec3f>& vectors) {
  std::vector<double> lengths(vectors.size());
  std::transform(vectors.begin(), vectors.end(), lengths.begin(), [](const cv::Vec3f& v) { return cv::norm(v); });
  const auto middle = lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2);
  std::nth_element(lengths.begin(), middle, lengths.end());
  return *middle;
}

void warnAboutUnits(ImuRecording& recording) {
  const double median = medianLength(recording.accel) / standardGravity;
  if (median < 0.8 || median > 1.25) {
    recording.warnings.push_back(
        fmt::format("accelerations are {:.3g} g in the median, about 1 g expected with gravity in them: is {} the unit "
                    "(--accel-unit)?",
                    median, recording.columns[4].unit));
  }
  constexpr float fastest = 70;  // rad/s, twice what sensors of hand-held devices measure
  const bool wild = std::any_of(recording.gyro.begin(), recording.gyro.end(), [](const cv::Vec3f& rate) {
    return std::any_of(rate.val, rate.val + 3, [](float r) { return std::abs(r) > fastest; });
  });
  if (wild) {
    recording.warnings.push_back(
        fmt::format("rates of more than {} rad/s: is {} the unit (--gyro-unit)?", fastest, recording.columns[1].unit));
  }
}

void checkTimes(const CsvTable& table, const ImuRecording& recording) {
  constexpr double longestStep = 86400;  // s
  const std::vector<double>& seconds = recording.time.seconds;
  const ColumnUse& time = recording.columns[0];
  for (std::size_t i = 1; i < seconds.size(); ++i) {
    const double step = seconds[i] - seconds[i - 1];
    if (step <= longestStep) continue;
    throw table.errorAt(i, fmt::format("{}: {:.6g} s after the sample before when the unit is {} ({}), at most {} s "
                                       "expected; --time-unit tells the unit",
                                       table.describe(time.number - 1), step, time.unit, time.unitFrom, longestStep));
  }
  const double rate = Sampling(seconds).rate();
  if (rate >= 2 && rate <= 1e5) return;
  throw UsageError(
      fmt::format("{}: {:.3g} samples per second when the unit of time is {} ({}), 2 to 100000 expected; "
                  "--time-unit tells the unit",
                  table.name(), rate, time.unit, time.unitFrom));
}

}  // namespace

ImuRecording readImuRecording(const CsvTable& table, const ImuColumnOptions& options) {
  const std::vector<std::size_t> columns =
      options.columns.empty() ? findColumns(table, imuColumns, "; --columns tells time, gyro x, y, z, accel x, y, z")
                              : chosenColumns(table, options.columns);
  const std::span all(columns);
  const auto time = all.first(1), gyro = all.subspan(1, 3), accel = all.subspan(4, 3);
  const Unit second = unitOf(table, time, Quantity::time, "--time-unit", options.timeUnit, "s");
  const Unit rate = unitOf(table, gyro, Quantity::gyro, "--gyro-unit", options.gyroUnit, "rad/s");
  const Unit force = unitOf(table, accel, Quantity::accel, "--accel-unit", options.accelUnit, "m/s2");
  ImuRecording recording;
  addUse(recording, table, time, second);
  addUse(recording, table, gyro, rate);
  addUse(recording, table, accel, force);
  recording.time = readTimes(table, columns[0], second.name);
  recording.gyro = readVectors(table, gyro, rate.name == "deg/s" ? CV_PI / 180 : 1);
  recording.accel = readVectors(table, accel, force.name == "g" ? standardGravity : 1);
  if (table.rows() < 2) throw UsageError(table.name() + ": one sample, two or more expected");
  checkTimes(table, recording);
  warnAboutUnits(recording);
  return recording;
}

AttitudeRecording readAttitudeRecording(const CsvTable& table, const std::string& timeUnit, const TimeStamp& origin) {
  const std::vector<std::size_t> columns =
      findColumns(table, attitudeColumns, "; expected are heads such as t_s, q_x, q_y, q_z, q_w");
  ColumnHead head;
  readHead(table.heads()[columns[0]], head);
  AttitudeRecording recording{readTimes(table, columns[0], head.unit.empty() ? timeUnit : head.unit, &origin), {}};
  for (std::size_t row = 0; row < table.rows(); ++row) {
    cv::Vec4d q;
    for (int i = 0; i < 4; ++i) q[i] = table.number(row, columns[i + 1]);
    const double length = cv::norm(q);
    if (!(length > 0.9 && length < 1.1)) {
      throw table.errorAt(row, fmt::format("a quaternion of length {:.3g}, 1 expected", length));
    }
    recording.quaternion.push_back(q * (1 / length));
  }
  return recording;
}

}  // namespace mirel
