#include <MirelAlgorithms/mesh/internal/FanSteps.h>
#include <MirelAlgorithms/mesh/internal/MeshUpdate.h>

#include <cstddef>
#include <vector>

namespace MirelAlgorithms {

void removeDeleted(std::vector<Triangle>& triangles) {
  std::erase_if(triangles, [](const Triangle& triangle) { return triangle.deleted != 0; });
}

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

void computeErrors(std::vector<Triangle>& triangles, const std::vector<Vertex>& vertices) {
  for (Triangle& triangle : triangles) fan::setErrors(triangle, vertices.data());
}

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

void updateMesh(int iteration, std::vector<Triangle>& triangles, std::vector<Vertex>& vertices,
                std::vector<Ref>& refs) {
  if (iteration > 0) removeDeleted(triangles);
  if (iteration == 0) {
    computeQuadrics(triangles, vertices);
    computeErrors(triangles, vertices);
  }
  listReferences(triangles, vertices, refs);
  if (iteration == 0) markBorders(triangles, vertices, refs);
}

}  // namespace MirelAlgorithms
