#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/mesh/internal/EdgeErrors.h>
#include <MirelAlgorithms/mesh/internal/QuadricError.h>

#include <algorithm>
#include <cstddef>

namespace MirelAlgorithms {
namespace {

constexpr std::size_t lanes = 4, coefficients = 10;

// Quadrics of edges side by side, and what their best positions give.
struct Batch {
  alignas(32) double q[coefficients][lanes];
  alignas(32) double determinants[lanes], errors[lanes];
};

MIREL_ALWAYS_INLINE void solve(Batch& batch) {
  for (std::size_t lane = 0; lane < lanes; ++lane) {
    SymetricMatrix q;
    for (std::size_t i = 0; i < coefficients; ++i) q.m[i] = batch.q[i][lane];
    const double det = batch.determinants[lane] = quadric::determinant(q);
    batch.errors[lane] = quadric::errorAt(q, quadric::bestPosition(q, det));
  }
}

void solveBaseline(Batch& batch) { solve(batch); }
MIREL_TARGET_AVX2 void solveAvx2(Batch& batch) { solve(batch); }

}  // namespace

void edgeErrors(const std::vector<Vertex>& vertices, const std::vector<Edge>& edges, std::vector<double>& errors) {
  const auto solveBatch = cpuVariant() >= CpuVariant::avx2 ? solveAvx2 : solveBaseline;
  errors.resize(edges.size());
  Batch batch = {};
  for (std::size_t first = 0; first < edges.size(); first += lanes) {
    const std::size_t count = std::min(lanes, edges.size() - first);
    for (std::size_t lane = 0; lane < count; ++lane) {
      const auto [a, b] = edges[first + lane];
      for (std::size_t i = 0; i < coefficients; ++i) batch.q[i][lane] = vertices[a].q.m[i] + vertices[b].q.m[i];
    }
    solveBatch(batch);
    for (std::size_t lane = 0; lane < count; ++lane) {
      const Vertex &a = vertices[edges[first + lane].a], &b = vertices[edges[first + lane].b];
      vec3f position;
      errors[first + lane] = quadric::hasBestPosition(batch.determinants[lane], a, b)
                                 ? batch.errors[lane]
                                 : quadric::collapseError(a, b, position);
    }
  }
}

}  // namespace MirelAlgorithms
