/// A closed surface like a scan, of any number of triangles.
#pragma once

#include <MirelAlgorithms/mesh/MeshSimplification.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <utility>

namespace bench {

using MirelAlgorithms::MeshSimplification;
using MirelAlgorithms::Triangle;
using MirelAlgorithms::vec3f;
using MirelAlgorithms::Vertex;

/// Distance of the surface from the origin in the direction of a unit vector, in millimetres.
inline double bumpyRadius(const vec3f& d) {
  constexpr double size = 100;
  return size * (1 + 0.1 * std::sin(5 * d.x) * std::cos(4 * d.y) + 0.02 * std::sin(17 * d.y + 11 * d.z) +
                 0.004 * std::cos(40 * d.z + 23 * d.x));
}

/// An octahedron with its edges cut into n parts, blown up to the surface: 8 n^2 triangles.
inline MeshSimplification bumpySphere(int n) {
  MeshSimplification mesh;
  std::map<std::array<int, 3>, int> numbers;  // of vertices on the octahedron |x| + |y| + |z| = n
  const auto vertex = [&](const std::array<int, 3>& at) {
    const auto [entry, isNew] = numbers.try_emplace(at, static_cast<int>(mesh.vertices.size()));
    if (isNew) {
      const vec3f direction =
          vec3f{static_cast<double>(at[0]), static_cast<double>(at[1]), static_cast<double>(at[2])}.normalized();
      Vertex point;
      point.p = direction * bumpyRadius(direction);
      mesh.vertices.push_back(point);
    }
    return entry->second;
  };
  for (int face = 0; face < 8; ++face) {
    const int sx = face & 1 ? -1 : 1, sy = face & 2 ? -1 : 1, sz = face & 4 ? -1 : 1;
    const auto at = [&](int i, int j) { return vertex({sx * (n - i), sy * (i - j), sz * j}); };
    const auto add = [&](int a, int b, int c) {
      Triangle triangle;
      triangle.v[0] = a;
      triangle.v[1] = sx * sy * sz > 0 ? b : c;
      triangle.v[2] = sx * sy * sz > 0 ? c : b;
      mesh.triangles.push_back(triangle);
    };
    for (int i = 0; i < n; ++i)
      for (int j = 0; j <= i; ++j) {
        add(at(i, j), at(i + 1, j), at(i + 1, j + 1));
        if (j < i) add(at(i, j), at(i + 1, j + 1), at(i, j + 1));
      }
  }
  return mesh;
}

/// Root mean square distance of a triangle mesh from the surface along the radius, in millionths of the model's
/// diagonal, sampled at ten points of each triangle. `corner(t, i)` gives a corner's position.
template <class Corner>
double radialRms(std::size_t triangles, Corner corner) {
  double sum = 0, count = 0;
  for (std::size_t t = 0; t < triangles; ++t)
    for (int i = 0; i <= 3; ++i)
      for (int j = 0; i + j <= 3; ++j, ++count) {
        const vec3f p = corner(t, 0) * (i / 3.0) + corner(t, 1) * (j / 3.0) + corner(t, 2) * ((3 - i - j) / 3.0);
        const double length = std::sqrt(p.dot(p)), error = length - bumpyRadius(p * (1 / length));
        sum += error * error;
      }
  const double diagonal = 200 * std::sqrt(3.0);
  return std::sqrt(sum / count) / diagonal * 1e6;
}

}  // namespace bench
