/// The arithmetic of quadric errors, inline and with a fixed order of operations.
#pragma once

#include <MirelAlgorithms/mesh/MeshRecords.h>

#include <cmath>

namespace MirelAlgorithms::quadric {

inline double dot(const vec3f& a, const vec3f& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

inline vec3f cross(const vec3f& a, const vec3f& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline vec3f normalized(const vec3f& a) {
  const double length = std::sqrt(dot(a, a));
  return {a.x / length, a.y / length, a.z / length};
}

inline double smaller(double a, double b) { return a < b ? a : b; }

inline double determinant(double a11, double a12, double a13, double a21, double a22, double a23, double a31,
                          double a32, double a33) {
  return a11 * a22 * a33 + a13 * a21 * a32 + a12 * a23 * a31 - a13 * a22 * a31 - a11 * a23 * a32 - a12 * a21 * a33;
}

/// Of the upper left 3 x 3 matrix.
inline double determinant(const SymetricMatrix& q) {
  const double* const m = q.m;
  return determinant(m[0], m[1], m[2], m[1], m[4], m[5], m[2], m[5], m[7]);
}

/// (x, y, z, 1) Q (x, y, z, 1)^T.
inline double errorAt(const SymetricMatrix& q, const vec3f& p) {
  const double* const m = q.m;
  return m[0] * p.x * p.x + 2 * m[1] * p.x * p.y + 2 * m[2] * p.x * p.z + 2 * m[3] * p.x + m[4] * p.y * p.y +
         2 * m[5] * p.y * p.z + 2 * m[6] * p.y + m[7] * p.z * p.z + 2 * m[8] * p.z + m[9];
}

/// The point of least error, by Cramer's rule from the determinant.
inline vec3f bestPosition(const SymetricMatrix& q, double det) {
  const double* const m = q.m;
  return {-1 / det * determinant(m[1], m[2], m[3], m[4], m[5], m[6], m[5], m[7], m[8]),
          1 / det * determinant(m[0], m[2], m[3], m[1], m[5], m[6], m[2], m[7], m[8]),
          -1 / det * determinant(m[0], m[1], m[3], m[1], m[4], m[6], m[2], m[5], m[8])};
}

/// The least error at both ends of an edge and in its middle, and where that is: of equal ones the last. `position`
/// stays as it is when the error is NaN. It may be one of the ends itself, which therefore come by value.
inline double bestOfEdge(const SymetricMatrix& q, vec3f p1, vec3f p2, vec3f& position) {
  const vec3f middle{(p1.x + p2.x) / 2, (p1.y + p2.y) / 2, (p1.z + p2.z) / 2};
  const double error1 = errorAt(q, p1), error2 = errorAt(q, p2), error3 = errorAt(q, middle);
  const double error = smaller(error1, smaller(error2, error3));
  if (error1 == error) position = p1;
  if (error2 == error) position = p2;
  if (error3 == error) position = middle;
  return error;
}

/// Whether an edge between two vertices, by the determinant of the sum of their quadrics, collapses to the point of
/// least error.
inline bool hasBestPosition(double det, const Vertex& v1, const Vertex& v2) {
  return det != 0 && (v1.border & v2.border) == 0;
}

/// Error of collapsing the edge between two vertices, and the position to collapse it to.
inline double collapseError(const Vertex& v1, const Vertex& v2, vec3f& position) {
  const SymetricMatrix q = v1.q + v2.q;
  const double det = determinant(q);
  if (!hasBestPosition(det, v1, v2)) return bestOfEdge(q, v1.p, v2.p, position);
  position = bestPosition(q, det);
  return errorAt(q, position);
}

/// Weights of the corners of a triangle that give a point.
inline vec3f barycentric(const vec3f& p, const vec3f& a, const vec3f& b, const vec3f& c) {
  const vec3f ab = b - a, ac = c - a, ap = p - a;
  const double d00 = dot(ab, ab), d01 = dot(ab, ac), d11 = dot(ac, ac), d20 = dot(ap, ab), d21 = dot(ap, ac);
  const double inverse = 1 / (d00 * d11 - d01 * d01);
  const double v = (d11 * d20 - d01 * d21) * inverse, w = (d00 * d21 - d01 * d20) * inverse;
  return {1 - v - w, v, w};
}

/// Values at three corners, blended for a point.
inline vec3f interpolate(const vec3f& p, const vec3f& a, const vec3f& b, const vec3f& c, const vec3f values[3]) {
  const vec3f weights = barycentric(p, a, b, c);
  return values[0] * weights.x + values[1] * weights.y + values[2] * weights.z;
}

}  // namespace MirelAlgorithms::quadric
