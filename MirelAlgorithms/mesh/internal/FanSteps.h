/// Steps over the fan of a vertex, the triangles that its references list. Numbers are not checked.
#pragma once

#include <MirelAlgorithms/mesh/internal/QuadricError.h>

#include <cmath>
#include <vector>

namespace MirelAlgorithms::fan {

inline int after(int corner) { return corner == 2 ? 0 : corner + 1; }

/// The smallest of three errors.
inline double smallest(const double* err) { return quadric::smaller(err[0], quadric::smaller(err[1], err[2])); }

/// Sets the errors of the three edges of a triangle; returns the smallest.
template <class Triangle>
double setErrors(Triangle& triangle, const Vertex* vertices) {
  const Vertex &a = vertices[triangle.v[0]], &b = vertices[triangle.v[1]], &c = vertices[triangle.v[2]];
  vec3f position;
  triangle.err[0] = quadric::collapseError(a, b, position);
  triangle.err[1] = quadric::collapseError(b, c, position);
  triangle.err[2] = quadric::collapseError(c, a, position);
  return smallest(triangle.err);
}

/// Whether two unit vectors from a corner leave hardly any angle between them.
inline bool isSliver(const vec3f& d1, const vec3f& d2) { return std::fabs(quadric::dot(d1, d2)) > 0.999; }

/// Whether the triangle between them is turned too far from its normal.
inline bool isTurned(const vec3f& d1, const vec3f& d2, const vec3f& normal) {
  return quadric::dot(quadric::normalized(quadric::cross(d1, d2)), normal) < 0.2;
}

/// Whether moving `vertex` to `p` turns a triangle around it too far or makes it a sliver. `deleted` gets 1 for the
/// triangles that also have the vertex `other`, else 0, up to where the answer is found.
inline bool flips(const vec3f& p, int other, const Vertex& vertex, const Ref* refs, const Triangle* triangles,
                  const Vertex* vertices, int* deleted) {
  for (int k = 0; k < vertex.tcount; ++k) {
    const Ref& ref = refs[vertex.tstart + k];
    const Triangle& triangle = triangles[ref.tid];
    if (triangle.deleted) continue;
    const int id1 = triangle.v[after(ref.tvertex)], id2 = triangle.v[after(after(ref.tvertex))];
    if (id1 == other || id2 == other) {
      deleted[k] = 1;
      continue;
    }
    const vec3f d1 = quadric::normalized(vertices[id1].p - p), d2 = quadric::normalized(vertices[id2].p - p);
    if (isSliver(d1, d2)) return true;
    deleted[k] = 0;
    if (isTurned(d1, d2, triangle.n)) return true;
  }
  return false;
}

/// Deletes the marked triangles around `vertex` and gives the others to vertex number `i0`; appends their references.
/// Returns how many it deleted.
inline int handOver(int i0, const Vertex& vertex, const int* deleted, std::vector<Triangle>& triangles,
                    const std::vector<Vertex>& vertices, std::vector<Ref>& refs) {
  int count = 0;
  for (int k = 0; k < vertex.tcount; ++k) {
    const Ref ref = refs[vertex.tstart + k];
    Triangle& triangle = triangles[ref.tid];
    if (triangle.deleted) continue;
    if (deleted[k]) {
      triangle.deleted = 1;
      ++count;
      continue;
    }
    triangle.v[ref.tvertex] = i0;
    triangle.dirty = 1;
    triangle.err[3] = setErrors(triangle, vertices.data());
    refs.push_back(ref);
  }
  return count;
}

/// Moves the texture coordinates at a corner of a triangle along to the point `p`.
inline void moveUv(vec3f* uvs, int corner, const vec3f& p, const int* v, const Vertex* vertices) {
  uvs[corner] = quadric::interpolate(p, vertices[v[0]].p, vertices[v[1]].p, vertices[v[2]].p, uvs);
}

/// The same in all triangles around `vertex` that are not marked.
inline void moveUvs(const Vertex& vertex, const vec3f& p, const int* deleted, const Ref* refs, Triangle* triangles,
                    const Vertex* vertices) {
  for (int k = 0; k < vertex.tcount; ++k) {
    const Ref& ref = refs[vertex.tstart + k];
    Triangle& triangle = triangles[ref.tid];
    if (!triangle.deleted && !deleted[k]) moveUv(triangle.uvs, ref.tvertex, p, triangle.v, vertices);
  }
}

}  // namespace MirelAlgorithms::fan
