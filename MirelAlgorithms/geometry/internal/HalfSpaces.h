/// Whether half-spaces have a point in common.
#pragma once

#include <array>

namespace MirelAlgorithms {

/// The points x with n . x + d >= 0.
struct HalfSpace {
  std::array<double, 3> normal;
  double distance;
};

using HalfSpaces = std::array<HalfSpace, 12>;

/// Whether all twelve share a point.
///
/// Minimises 1/2 x . x + (1, 1, 1) . x over the half-spaces by the dual active-set method of Goldfarb and Idnani ("A
/// numerically stable dual method for solving strictly convex quadratic programs", Mathematical Programming 27 (1983)
/// 1), which finds out on its way when there is no solution. A half-space counts as reached within 1e-12 of the largest
/// distance involved. Parallel, repeated and zero planes are fine; planes that are not finite have nothing in common.
///
/// Always ends: after `mostSteps` additions and removals of planes, of which a handful is usual, the answer is no.
inline constexpr int mostSteps = 200;
bool haveCommonPoint(const HalfSpaces& halfSpaces);

}  // namespace MirelAlgorithms
