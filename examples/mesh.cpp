// A sphere of 20000 triangles is simplified, and written if a name is given.
//
//   mesh [OUT.obj]
#include <MirelAlgorithms/MirelAlgorithms.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

using namespace MirelAlgorithms;

namespace {

constexpr int kRings = 101, kSectors = 100;

// Radius 1; rings from pole to pole, two triangles between four neighbours, one at the poles.
MeshSimplification sphere() {
  MeshSimplification mesh;
  const auto add = [&](double x, double y, double z) {
    Vertex vertex;
    vertex.p = {x, y, z};
    mesh.vertices.push_back(vertex);
  };
  const auto join = [&](int a, int b, int c) {
    Triangle triangle;
    triangle.v[0] = a, triangle.v[1] = b, triangle.v[2] = c;
    mesh.triangles.push_back(triangle);
  };
  const double pi = std::acos(-1.0);
  for (int ring = 1; ring < kRings; ++ring)
    for (int sector = 0; sector < kSectors; ++sector) {
      const double down = pi * ring / kRings, around = 2.0 * pi * sector / kSectors;
      add(std::sin(down) * std::cos(around), std::sin(down) * std::sin(around), std::cos(down));
    }
  const int north = (kRings - 1) * kSectors, south = north + 1;
  add(0, 0, 1);
  add(0, 0, -1);
  for (int sector = 0; sector < kSectors; ++sector) {
    const int next = (sector + 1) % kSectors, last = north - kSectors;
    join(north, sector, next);
    join(south, last + next, last + sector);
    for (int upper = 0; upper < last; upper += kSectors) {
      join(upper + sector, upper + kSectors + sector, upper + next);
      join(upper + next, upper + kSectors + sector, upper + kSectors + next);
    }
  }
  return mesh;
}

void print(const char* what, const MeshSimplification& mesh) {
  double least = 1.0;  // distance of a triangle's middle from the centre
  for (const Triangle& t : mesh.triangles) {
    vec3f middle;
    for (const int v : t.v) middle = middle + mesh.vertices[static_cast<std::size_t>(v)].p * (1.0 / 3.0);
    least = std::min(least, std::sqrt(middle.dot(middle)));
  }
  std::printf("%s: %zu triangles, %zu vertices, at most %.4f inside the sphere\n", what, mesh.triangles.size(),
              mesh.vertices.size(), 1.0 - least);
}

}  // namespace

int main(int argc, char** argv) {
  MeshSimplification mesh = sphere();
  print("made", mesh);
  mesh.simplify_mesh(2000, 7.0, false);
  print("simplified", mesh);
  if (argc > 1) mesh.write_obj(argv[1]);
  return mesh.triangles.size() <= 2000 ? 0 : 1;
}
