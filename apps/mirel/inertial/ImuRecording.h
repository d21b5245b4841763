/// Recordings of an inertial sensor.
#pragma once

#include "input/TimeColumn.h"

#include <opencv2/core/matx.hpp>
#include <string>
#include <vector>

namespace mirel {

/// How the user says what the file means; empty texts leave it to the heads.
struct ImuColumnOptions {
  std::string columns;  ///< seven heads or numbers: time, gyro x y z, accel x y z
  std::string timeUnit, gyroUnit, accelUnit;
};

/// Where a quantity was found and how it was read.
struct ColumnUse {
  std::string quantity;  ///< "gyro x"
  std::size_t number;    ///< from 1 on
  std::string head;
  std::string unit;
  std::string unitFrom;  ///< "head", "option" or "assumed"
};

/// One entry per sample.
struct ImuRecording {
  Times time;                    ///< s, from the first sample on
  std::vector<cv::Vec3f> gyro;   ///< rad/s
  std::vector<cv::Vec3f> accel;  ///< m/s2
  std::vector<ColumnUse> columns;
  std::vector<std::string> warnings;  ///< numbers that look as if the unit were another one
};

constexpr double standardGravity = 9.80665;  // m/s2

/// Finds the columns, checks every number and converts to SI units. Throws `UsageError` for columns that are missing or
/// found twice, units that contradict each other, fewer than two samples, and whatever `CsvTable` and `readTimes`
/// throw.
ImuRecording readImuRecording(const CsvTable& table, const ImuColumnOptions& options);

/// A recorded attitude, x, y, z, w, unit length.
struct AttitudeRecording {
  Times time;  ///< s, from `origin` on
  std::vector<cv::Vec4d> quaternion;
};

/// Reads columns of time and quaternion.
///
/// @param timeUnit  taken where the head tells none
AttitudeRecording readAttitudeRecording(const CsvTable& table, const std::string& timeUnit, const TimeStamp& origin);

}  // namespace mirel
