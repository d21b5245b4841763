/// 2-vector of doubles.
#pragma once

namespace VoskBase {

struct SVec2d {
  double x = 0.0;
  double y = 0.0;

  SVec2d() = default;
  SVec2d(double x_, double y_) : x(x_), y(y_) {}

  friend bool operator==(const SVec2d&, const SVec2d&) = default;
};

}  // namespace VoskBase
