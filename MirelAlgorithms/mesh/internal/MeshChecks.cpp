#include <MirelAlgorithms/frame/internal/Require.h>
#include <MirelAlgorithms/mesh/internal/MeshChecks.h>

#include <climits>
#include <cstddef>
#include <string>

namespace MirelAlgorithms {
namespace {

long long last(std::size_t size) { return static_cast<long long>(size) - 1; }

bool within(int number, std::size_t size) { return static_cast<std::size_t>(number) < size; }

void requireCorners(const char* function, const Triangle& triangle, std::size_t vertices) {
  for (const int number : triangle.v)
    if (!within(number, vertices)) requireRange(function, "vertex number of a triangle", number, 0, last(vertices));
}

}  // namespace

void requireVertices(const char* function, const MeshSimplification& mesh, bool alsoOfDeleted) {
  requireRange(function, "triangles", static_cast<long long>(mesh.triangles.size()), 0, INT_MAX / 3);
  for (const Triangle& triangle : mesh.triangles)
    if (alsoOfDeleted || !triangle.deleted) requireCorners(function, triangle, mesh.vertices.size());
}

void requireVertex(const char* function, const char* argument, const MeshSimplification& mesh, int number) {
  requireRange(function, argument, number, 0, last(mesh.vertices.size()));
}

void requireFan(const char* function, const char* argument, const MeshSimplification& mesh, const Vertex& vertex,
                const std::vector<int>& marks) {
  if (vertex.tcount <= 0) return;
  const long long count = vertex.tcount;
  requireRange(function, argument, vertex.tstart, 0, static_cast<long long>(mesh.refs.size()) - count);
  if (static_cast<long long>(marks.size()) < count)
    refuse(function, "elements of deleted", std::to_string(marks.size()), "at least " + std::to_string(count));
  for (long long k = 0; k < count; ++k) {
    const Ref& ref = mesh.refs[static_cast<std::size_t>(vertex.tstart + k)];
    requireRange(function, "triangle of a reference", ref.tid, 0, last(mesh.triangles.size()));
    requireRange(function, "corner of a reference", ref.tvertex, 0, 2);
    const Triangle& triangle = mesh.triangles[static_cast<std::size_t>(ref.tid)];
    if (!triangle.deleted) requireCorners(function, triangle, mesh.vertices.size());
  }
}

}  // namespace MirelAlgorithms
