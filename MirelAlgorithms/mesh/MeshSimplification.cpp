#include <MirelAlgorithms/frame/internal/Require.h>
#include <MirelAlgorithms/mesh/MeshSimplification.h>
#include <MirelAlgorithms/mesh/internal/EdgeCollapse.h>
#include <MirelAlgorithms/mesh/internal/FanSteps.h>
#include <MirelAlgorithms/mesh/internal/MeshChecks.h>
#include <MirelAlgorithms/mesh/internal/MeshUpdate.h>

#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <limits>
#include <vector>

namespace MirelAlgorithms {
namespace {

void removeDeleted(std::vector<Triangle>& triangles) {
  std::erase_if(triangles, [](const Triangle& triangle) { return triangle.deleted != 0; });
}

// Removes deleted triangles; marks the vertices of the others with a count of 1, the rest with 0.
void compactTriangles(std::vector<Triangle>& triangles, std::vector<Vertex>& vertices) {
  for (Vertex& vertex : vertices) vertex.tcount = 0;
  removeDeleted(triangles);
  for (const Triangle& triangle : triangles)
    for (const int number : triangle.v) vertices[number].tcount = 1;
}

// Moves the positions of marked vertices forward. Their new numbers stand in `tstart` of their old places.
void compactVertices(std::vector<Triangle>& triangles, std::vector<Vertex>& vertices) {
  int count = 0;
  for (Vertex& vertex : vertices) {
    if (!vertex.tcount) continue;
    vertex.tstart = count;
    vertices[count++].p = vertex.p;
  }
  for (Triangle& triangle : triangles)
    for (int& number : triangle.v) number = vertices[number].tstart;
  vertices.resize(count);
}

}  // namespace

void MeshSimplification::simplify_mesh(int target_count, double aggressiveness, bool verbose) {
  constexpr int passes = 100, passesPerUpdate = 5;
  requireVertices("simplify_mesh", *this, true);
  for (Triangle& triangle : triangles) triangle.deleted = 0;
  long long left = static_cast<long long>(triangles.size());
  if (left > target_count) {
    EdgeCollapse collapse(triangles, vertices, refs);
    for (int iteration = 0; iteration < passes && left > target_count; ++iteration) {
      const bool update = iteration % passesPerUpdate == 0;
      if (update) collapse.update(iteration);
      const double threshold = 0.000000001 * std::pow(static_cast<double>(iteration + 3), aggressiveness);
      if (verbose && update) std::printf("iteration %d - triangles %lld threshold %g\n", iteration, left, threshold);
      left -= collapse.pass(threshold, left - target_count);
    }
    collapse.finish();
  }
  compact_mesh();
}

void MeshSimplification::simplify_mesh_lossless(bool verbose) {
  constexpr int passes = 9999;
  constexpr double threshold = std::numeric_limits<double>::epsilon();
  requireVertices("simplify_mesh_lossless", *this, true);
  EdgeCollapse collapse(triangles, vertices, refs);
  for (int iteration = 0; iteration < passes; ++iteration) {
    collapse.update(iteration);
    if (verbose) std::printf("lossless iteration %d\n", iteration);
    if (collapse.pass(threshold, LLONG_MAX) == 0) break;
  }
  collapse.finish();
  compact_mesh();
}

void MeshSimplification::update_mesh(int iteration) {
  requireVertices("update_mesh", *this, iteration <= 0);
  if (iteration > 0) removeDeleted(triangles);
  if (iteration == 0) {
    computeQuadrics(triangles, vertices);
    for (Triangle& triangle : triangles) triangle.err[3] = fan::setErrors(triangle, vertices.data());
  }
  listReferences(triangles, vertices, refs);
  if (iteration == 0) markBorders(triangles, vertices, refs);
}

double MeshSimplification::calculate_error(int id_v1, int id_v2, vec3f& p_result) {
  requireVertex("calculate_error", "id_v1", *this, id_v1);
  requireVertex("calculate_error", "id_v2", *this, id_v2);
  return quadric::collapseError(vertices[id_v1], vertices[id_v2], p_result);
}

double MeshSimplification::vertex_error(SymetricMatrix q, double x, double y, double z) {
  return quadric::errorAt(q, {x, y, z});
}

bool MeshSimplification::flipped(vec3f p, int /*i0*/, int i1, Vertex& va, Vertex& /*vb*/, std::vector<int>& deleted) {
  requireFan("flipped", "va.tstart", *this, va, deleted);
  return fan::flips(p, i1, va, refs.data(), triangles.data(), vertices.data(), deleted.data());
}

void MeshSimplification::update_triangles(int i0, Vertex& v, std::vector<int>& deleted, int& deleted_triangles) {
  requireVertex("update_triangles", "i0", *this, i0);
  requireFan("update_triangles", "v.tstart", *this, v, deleted);
  deleted_triangles += fan::handOver(i0, v, deleted.data(), triangles, vertices, refs);
}

void MeshSimplification::update_uvs(int /*i0*/, const Vertex& v, const vec3f& p, std::vector<int>& deleted) {
  requireFan("update_uvs", "v.tstart", *this, v, deleted);
  fan::moveUvs(v, p, deleted.data(), refs.data(), triangles.data(), vertices.data());
}

vec3f MeshSimplification::barycentric(const vec3f& p, const vec3f& a, const vec3f& b, const vec3f& c) {
  return quadric::barycentric(p, a, b, c);
}

vec3f MeshSimplification::interpolate(const vec3f& p, const vec3f& a, const vec3f& b, const vec3f& c,
                                      const vec3f attrs[3]) {
  if (!attrs) refuse("interpolate", "attrs", "null", "three values");
  return quadric::interpolate(p, a, b, c, attrs);
}

void MeshSimplification::compact_mesh() {
  requireVertices("compact_mesh", *this, false);
  compactTriangles(triangles, vertices);
  compactVertices(triangles, vertices);
}

}  // namespace MirelAlgorithms
