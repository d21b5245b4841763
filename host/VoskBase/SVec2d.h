/// 2-vector of doubles.
#pragma once

namespace VoskBase {

/// A point or a direction of the image plane, in pixels unless a function says otherwise.
struct SVec2d {
  double x = 0.0;  ///< along the columns
  double y = 0.0;  ///< along the rows

  /// (0, 0).
  SVec2d() = default;

  /// From its components.
  SVec2d(double x_, double y_) : x(x_), y(y_) {}

  friend bool operator==(const SVec2d&, const SVec2d&) = default;
};

}  // namespace VoskBase
