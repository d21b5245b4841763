/// Comparing meshes.
#pragma once

#include <MirelAlgorithms/mesh/MeshSimplification.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

namespace MirelAlgorithms {

/// All numbers in a mesh, bit for bit; NaN is one number.
template <class Mesh>
std::vector<std::uint64_t> bits(const Mesh& mesh) {
  std::vector<std::uint64_t> all;
  const auto add = [&](const auto&... values) {
    (all.push_back(std::bit_cast<std::uint64_t>(std::isnan(values) ? std::nan("") : static_cast<double>(values))), ...);
  };
  for (const Triangle& t : mesh.triangles) {
    add(t.v[0], t.v[1], t.v[2], t.deleted, t.dirty, t.attr, t.n.x, t.n.y, t.n.z, t.material);
    for (const double error : t.err) add(error);
    for (const vec3f& uv : t.uvs) add(uv.x, uv.y, uv.z);
  }
  for (const Vertex& v : mesh.vertices) {
    add(v.p.x, v.p.y, v.p.z, v.tstart, v.tcount, v.border);
    for (const double coefficient : v.q.m) add(coefficient);
  }
  for (const Ref& ref : mesh.refs) add(ref.tid, ref.tvertex);
  return all;
}

}  // namespace MirelAlgorithms
