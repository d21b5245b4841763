/// The shape of a mesh without anything else.
#pragma once

#include <MirelAlgorithms/mesh/MeshSimplification.h>

#include <Eigen/Geometry>
#include <array>
#include <cstddef>
#include <vector>

namespace mirel {

/// Points and triangles between them: a fifth of the memory that a mesh takes which can be simplified.
struct Surface {
  std::vector<Eigen::Vector3d> points;
  std::vector<std::array<int, 3>> triangles;

  explicit Surface(const MirelAlgorithms::MeshSimplification& mesh) {
    for (const MirelAlgorithms::Vertex& vertex : mesh.vertices) points.emplace_back(vertex.p.x, vertex.p.y, vertex.p.z);
    for (const MirelAlgorithms::Triangle& t : mesh.triangles) triangles.push_back({t.v[0], t.v[1], t.v[2]});
  }

  const Eigen::Vector3d& corner(std::size_t triangle, int number) const { return points[triangles[triangle][number]]; }

  /// Around all triangles.
  Eigen::AlignedBox3d box() const {
    Eigen::AlignedBox3d box;
    for (const std::array<int, 3>& triangle : triangles) {
      for (const int number : triangle) box.extend(points[number]);
    }
    return box;
  }
};

}  // namespace mirel
