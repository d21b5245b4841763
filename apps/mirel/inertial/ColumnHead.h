/// What the head of a column says: the quantity, its axis, its unit.
#pragma once

#include <string>

namespace mirel {

enum class Quantity { time, gyro, accel, attitude };

/// A column's meaning.
struct ColumnHead {
  Quantity quantity = Quantity::time;
  char axis = 0;        ///< x, y, z; also w for the attitude; 0 for the time
  std::string unit;     ///< s, ms, us, ns; rad/s, deg/s; m/s2, g; empty when the head tells none
  std::string unknown;  ///< what stands where a unit is expected and is none of these
};

/// Understands the usual spellings, with the unit in brackets or at the end: `t_s`, `timestamp [ns]`, `gyro_x_rad_s`,
/// `gx`, `wx`, `angular_velocity.x`, `Gyroscope x (deg/s)`, `accel_x_m_s2`, `AccX`, `ax_g`, `q_w`. See
/// docs/imu-files.md.
///
/// @return  false for any other head
bool readHead(const std::string& text, ColumnHead& head);

}  // namespace mirel
