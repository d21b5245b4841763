/// A quick answer to whether a triangle survives the move of one of its corners, without roots and divisions.
#pragma once

#include <MirelAlgorithms/mesh/internal/QuadricError.h>

namespace MirelAlgorithms {

/// From the new position of a vertex to a neighbour.
struct Spoke {
  vec3f direction;
  double squaredLength;
  bool isOrdinary;  ///< far from overflow, also of products of such squares
};

inline Spoke spoke(const vec3f& from, const vec3f& to) {
  constexpr double least = 1e-120, most = 1e120;
  const vec3f direction = to - from;
  const double squaredLength = quadric::dot(direction, direction);
  return {direction, squaredLength, squaredLength > least && squaredLength < most};
}

/// Whether a triangle between two spokes is clearly no sliver and clearly not turned from its normal n. The limits are
/// those of `fan::isSliver` and `fan::isTurned`, squared, and so much stricter that no rounding matters:
///
///     (a b)^2 < 0.999^2 a^2 b^2    and    (a x b) n > 0.2 |a x b|
///
/// False also means that the exact test has to decide.
inline bool isClearlyKept(const Spoke& a, const Spoke& b, const vec3f& n) {
  constexpr double sliver = 0.998, turned = 0.0401;
  if (!a.isOrdinary || !b.isOrdinary) return false;
  const double product = quadric::dot(a.direction, b.direction);
  if (!(product * product < sliver * (a.squaredLength * b.squaredLength))) return false;
  const vec3f normal = quadric::cross(a.direction, b.direction);
  const double along = quadric::dot(normal, n);
  return along > 0 && along * along > turned * quadric::dot(normal, normal);
}

}  // namespace MirelAlgorithms
