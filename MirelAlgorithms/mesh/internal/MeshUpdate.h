/// What is computed from the triangles as a whole, for records of triangles with more or fewer fields. Vertex numbers
/// are not checked.
#pragma once

#include <MirelAlgorithms/mesh/internal/QuadricError.h>

#include <cstddef>
#include <vector>

namespace MirelAlgorithms {

/// Normals of the triangles, and the quadrics of their planes added up at the vertices.
template <class Triangle>
void computeQuadrics(std::vector<Triangle>& triangles, std::vector<Vertex>& vertices) {
  for (Vertex& vertex : vertices) vertex.q = {};
  for (Triangle& triangle : triangles) {
    Vertex &a = vertices[triangle.v[0]], &b = vertices[triangle.v[1]], &c = vertices[triangle.v[2]];
    const vec3f n = triangle.n = quadric::normalized(quadric::cross(b.p - a.p, c.p - a.p));
    const SymetricMatrix plane(n.x, n.y, n.z, -quadric::dot(n, a.p));
    a.q = a.q + plane;
    b.q = b.q + plane;
    c.q = c.q + plane;
  }
}

/// Lists the triangles of every vertex, vertex by vertex, each in the order of the triangles.
template <class Triangle>
void listReferences(const std::vector<Triangle>& triangles, std::vector<Vertex>& vertices, std::vector<Ref>& refs) {
  for (Vertex& vertex : vertices) vertex.tcount = 0;
  for (const Triangle& triangle : triangles)
    for (const int number : triangle.v) ++vertices[number].tcount;
  int start = 0;
  for (Vertex& vertex : vertices) {
    vertex.tstart = start;
    start += vertex.tcount;
    vertex.tcount = 0;
  }
  refs.resize(triangles.size() * 3);
  for (std::size_t t = 0; t < triangles.size(); ++t)
    for (int corner = 0; corner < 3; ++corner) {
      Vertex& vertex = vertices[triangles[t].v[corner]];
      refs[vertex.tstart + vertex.tcount++] = {static_cast<int>(t), corner};
    }
}

/// Marks every vertex that is a corner of only one triangle of some fan.
template <class Triangle>
void markBorders(const std::vector<Triangle>& triangles, std::vector<Vertex>& vertices, const std::vector<Ref>& refs) {
  for (Vertex& vertex : vertices) vertex.border = 0;
  std::vector<int> uses(vertices.size());  // in the fan at hand
  for (const Vertex& vertex : vertices) {
    const Ref* const fan = refs.data() + vertex.tstart;
    for (int k = 0; k < vertex.tcount; ++k)
      for (const int number : triangles[fan[k].tid].v) ++uses[number];
    for (int k = 0; k < vertex.tcount; ++k)
      for (const int number : triangles[fan[k].tid].v) {
        if (uses[number] == 1) vertices[number].border = 1;
        uses[number] = 0;
      }
  }
}

}  // namespace MirelAlgorithms
