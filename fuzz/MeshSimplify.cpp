/// Meshes with fewer triangles: the same as step by step without any shortcut, whatever the mesh looks like, and bad
/// vertex numbers are refused before anything changes.
#include <mesh/LiteralMesh.h>
#include <mesh/MeshBits.h>

#include <array>

#include "Check.h"

namespace {

using namespace MirelAlgorithms;

vec3f anyPlace(FuzzedDataProvider& data) {
  return {anyReal<double>(data), anyReal<double>(data), anyReal<double>(data)};  // from left to right
}

void changeSomething(FuzzedDataProvider& data, MeshSimplification& mesh) {
  Triangle& triangle = mesh.triangles[data.ConsumeIntegral<uint8_t>() % mesh.triangles.size()];
  Vertex& vertex = mesh.vertices[data.ConsumeIntegral<uint8_t>() % mesh.vertices.size()];
  switch (data.ConsumeIntegralInRange(0, 6)) {
    case 0:
      vertex.p = anyPlace(data);
      break;
    case 1:
      triangle.deleted = 1;
      break;
    case 2:
      triangle.attr ^= Triangle::hasTexture;
      break;
    case 3:
      triangle.uvs[data.ConsumeIntegralInRange(0, 2)].x = anyReal<double>(data);
      break;
    case 4:
      mesh.triangles.push_back(Triangle(triangle));
      break;
    default:  // mostly another vertex, sometimes none
      triangle.v[data.ConsumeIntegralInRange(0, 2)] =
          data.ConsumeIntegralInRange(0, 15) ? data.ConsumeIntegral<uint8_t>() % static_cast<int>(mesh.vertices.size())
                                             : data.ConsumeIntegral<int>();
  }
}

// A height field, then some of its triangles and vertices changed.
MeshSimplification anyMesh(FuzzedDataProvider& data) {
  MeshSimplification mesh;
  const int width = data.ConsumeIntegralInRange(1, 8), height = data.ConsumeIntegralInRange(1, 8);
  const double bumps = data.PickValueInArray({0.0, 1e-5, 0.01, 1.0});
  for (int i = 0; i < width * height; ++i)
    mesh.vertices.emplace_back().p = {1.0 * (i % width), 1.0 * (i / width),
                                      bumps * data.ConsumeIntegralInRange(-100, 100)};
  const bool textured = data.ConsumeBool();
  for (int i = 0; i + width < width * height; ++i) {
    if (i % width == width - 1) continue;
    for (const auto& corners : {std::array{i, i + 1, i + width}, std::array{i + 1, i + width + 1, i + width}}) {
      Triangle& triangle = mesh.triangles.emplace_back();
      std::copy(corners.begin(), corners.end(), triangle.v);
      triangle.attr = textured ? Triangle::hasTexture : 0;
      for (vec3f& uv : triangle.uvs) uv = {0.125 * i, 0.25, 0};
    }
  }
  if (mesh.triangles.empty()) return mesh;
  for (int left = data.ConsumeIntegralInRange(0, 12); left > 0; --left) changeSomething(data, mesh);
  return mesh;
}

bool verticesExist(const MeshSimplification& mesh) {
  const auto exists = [&](int number) { return number >= 0 && number < static_cast<int>(mesh.vertices.size()); };
  return std::all_of(mesh.triangles.begin(), mesh.triangles.end(),
                     [&](const Triangle& t) { return std::all_of(t.v, t.v + 3, exists); });
}

}  // namespace

void feed(FuzzedDataProvider& data) {
  const bool lossless = data.ConsumeBool(), verbose = data.ConsumeBool();
  const int target = data.ConsumeIntegralInRange(-1, 130);
  const double aggressiveness = data.ConsumeBool() ? 7.0 : anyReal<double>(data);
  MeshSimplification mesh = anyMesh(data);
  literal::Mesh wanted{mesh.triangles, mesh.vertices, mesh.refs};
  const bool fine = verticesExist(mesh);
  MIREL_CHECK(refused([&] {
                lossless ? mesh.simplify_mesh_lossless(verbose) : mesh.simplify_mesh(target, aggressiveness, verbose);
              }) != fine);
  if (fine) lossless ? wanted.simplifyLossless() : wanted.simplify(target, aggressiveness);
  MIREL_CHECK(bits(mesh) == bits(wanted));
}
