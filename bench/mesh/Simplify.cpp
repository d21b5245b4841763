// Simplification of a closed mesh to a tenth of its triangles beside meshoptimizer, CGAL and OpenMesh. Printed beside
// the times: triangles left and the distance from the true surface, in millionths of the diagonal.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <iterator>
#include <vector>

#include "mesh/BumpySphere.h"
#if MIREL_BENCH_MESHOPTIMIZER
#include <meshoptimizer.h>
#endif
#if MIREL_BENCH_CGAL
#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>
#include <CGAL/Surface_mesh_simplification/Policies/Edge_collapse/Count_ratio_stop_predicate.h>
#include <CGAL/Surface_mesh_simplification/Policies/Edge_collapse/GarlandHeckbert_policies.h>
#include <CGAL/Surface_mesh_simplification/edge_collapse.h>
#endif
#if MIREL_BENCH_OPENMESH
#include <OpenMesh/Core/Mesh/TriMesh_ArrayKernelT.hh>
#include <OpenMesh/Tools/Decimater/DecimaterT.hh>
#include <OpenMesh/Tools/Decimater/ModQuadricT.hh>
#endif

namespace {

using bench::MeshSimplification;
using bench::vec3f;

constexpr int tenth = 10;

template <class Corner>
void report(benchmark::State& state, std::size_t before, std::size_t after, Corner corner) {
  state.counters["left"] = static_cast<double>(after);
  state.counters["rms_ppm"] = bench::radialRms(after, corner);
  state.SetItemsProcessed(state.iterations() * static_cast<long>(before));
}

int target(const MeshSimplification& mesh) { return static_cast<int>(mesh.triangles.size()) / tenth; }

void simplify(benchmark::State& state, const MeshSimplification& whole) {
  MeshSimplification mesh;
  for (auto _ : state) {
    state.PauseTiming();
    mesh = whole;
    state.ResumeTiming();
    mesh.simplify_mesh(target(whole), 7.0, false);
  }
  report(state, whole.triangles.size(), mesh.triangles.size(),
         [&](std::size_t t, int i) { return mesh.vertices[static_cast<std::size_t>(mesh.triangles[t].v[i])].p; });
}

void simplifyLossless(benchmark::State& state, const MeshSimplification& whole) {
  MeshSimplification mesh;
  for (auto _ : state) {
    state.PauseTiming();
    mesh = whole;
    state.ResumeTiming();
    mesh.simplify_mesh_lossless(false);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<long>(whole.triangles.size()));
}

#if MIREL_BENCH_MESHOPTIMIZER
void simplifyMeshoptimizer(benchmark::State& state, const MeshSimplification& whole) {
  std::vector<float> positions;
  for (const auto& [p, start, count, q, border] : whole.vertices)
    for (const double coordinate : {p.x, p.y, p.z}) positions.push_back(static_cast<float>(coordinate));
  std::vector<unsigned> corners;
  for (const auto& triangle : whole.triangles) corners.insert(corners.end(), triangle.v, triangle.v + 3);
  std::vector<unsigned> left;
  for (auto _ : state) {
    left.resize(corners.size());
    left.resize(meshopt_simplify(left.data(), corners.data(), corners.size(), positions.data(), whole.vertices.size(),
                                 3 * sizeof(float), corners.size() / tenth, 1.0F, 0, nullptr));
  }
  report(state, whole.triangles.size(), left.size() / 3, [&](std::size_t t, int i) {
    const float* const p = &positions[3 * left[3 * t + static_cast<std::size_t>(i)]];
    return vec3f{p[0], p[1], p[2]};
  });
}
#endif

#if MIREL_BENCH_CGAL
void simplifyCgal(benchmark::State& state, const MeshSimplification& whole) {
  using Kernel = CGAL::Simple_cartesian<double>;
  using Mesh = CGAL::Surface_mesh<Kernel::Point_3>;
  namespace Simplification = CGAL::Surface_mesh_simplification;
  Mesh original;
  for (const auto& vertex : whole.vertices) original.add_vertex({vertex.p.x, vertex.p.y, vertex.p.z});
  for (const auto& triangle : whole.triangles)
    original.add_face(Mesh::Vertex_index(static_cast<unsigned>(triangle.v[0])),
                      Mesh::Vertex_index(static_cast<unsigned>(triangle.v[1])),
                      Mesh::Vertex_index(static_cast<unsigned>(triangle.v[2])));
  Mesh mesh;
  for (auto _ : state) {
    state.PauseTiming();
    mesh = original;
    state.ResumeTiming();
    // A closed mesh has 3 edges for 2 triangles throughout.
    const Simplification::Count_ratio_stop_predicate<Mesh> stop(1.0 / tenth);
    const Simplification::GarlandHeckbert_plane_policies<Mesh, Kernel> policies(mesh);
    Simplification::edge_collapse(
        mesh, stop, CGAL::parameters::get_cost(policies.get_cost()).get_placement(policies.get_placement()));
    mesh.collect_garbage();
  }
  const std::vector<Mesh::Face_index> faces(mesh.faces().begin(), mesh.faces().end());
  report(state, whole.triangles.size(), faces.size(), [&](std::size_t t, int i) {
    auto corner = mesh.halfedge(faces[t]);
    for (; i > 0; --i) corner = mesh.next(corner);
    const auto& p = mesh.point(mesh.target(corner));
    return vec3f{p.x(), p.y(), p.z()};
  });
}
#endif

#if MIREL_BENCH_OPENMESH
void simplifyOpenMesh(benchmark::State& state, const MeshSimplification& whole) {
  struct Doubles : OpenMesh::DefaultTraits {
    using Point = OpenMesh::Vec3d;
    using Normal = OpenMesh::Vec3d;
  };
  using Mesh = OpenMesh::TriMesh_ArrayKernelT<Doubles>;
  Mesh original;
  for (const auto& vertex : whole.vertices) original.add_vertex({vertex.p.x, vertex.p.y, vertex.p.z});
  for (const auto& triangle : whole.triangles)
    original.add_face(Mesh::VertexHandle(triangle.v[0]), Mesh::VertexHandle(triangle.v[1]),
                      Mesh::VertexHandle(triangle.v[2]));
  Mesh mesh;
  for (auto _ : state) {
    state.PauseTiming();
    mesh = original;
    state.ResumeTiming();
    OpenMesh::Decimater::DecimaterT<Mesh> decimater(mesh);
    OpenMesh::Decimater::ModQuadricT<Mesh>::Handle quadrics;
    decimater.add(quadrics);
    decimater.module(quadrics).unset_max_err();
    decimater.initialize();
    decimater.decimate_to_faces(0, whole.triangles.size() / tenth);
    mesh.garbage_collection();
  }
  report(state, whole.triangles.size(), mesh.n_faces(), [&](std::size_t t, int i) {
    auto corner = mesh.fv_iter(mesh.face_handle(static_cast<unsigned>(t)));
    std::advance(corner, i);
    const auto& p = mesh.point(*corner);
    return vec3f{p[0], p[1], p[2]};
  });
}
#endif

// A mesh of 8 n^2 triangles.
template <void (*function)(benchmark::State&, const MeshSimplification&), int n>
void on(benchmark::State& state) {
  static const MeshSimplification mesh = bench::bumpySphere(n);
  function(state, mesh);
}

#define MIREL_SIMPLIFY(function, name)                                           \
  BENCHMARK(on<function, 50>)->Name(name "/20k")->Unit(benchmark::kMillisecond); \
  BENCHMARK(on<function, 158>)->Name(name "/200k")->Unit(benchmark::kMillisecond)

MIREL_SIMPLIFY(simplify, "simplify");
BENCHMARK(on<simplify, 500>)->Name("simplify/2M")->Unit(benchmark::kMillisecond);
BENCHMARK(on<simplifyLossless, 158>)->Name("simplify_lossless/200k")->Unit(benchmark::kMillisecond);
#if MIREL_BENCH_MESHOPTIMIZER
MIREL_SIMPLIFY(simplifyMeshoptimizer, "simplify_meshoptimizer");
BENCHMARK(on<simplifyMeshoptimizer, 500>)->Name("simplify_meshoptimizer/2M")->Unit(benchmark::kMillisecond);
#endif
#if MIREL_BENCH_CGAL
MIREL_SIMPLIFY(simplifyCgal, "simplify_cgal");
#endif
#if MIREL_BENCH_OPENMESH
MIREL_SIMPLIFY(simplifyOpenMesh, "simplify_openmesh");
#endif

}  // namespace
