/// Meshes with fewer triangles: the same as step by step without any shortcut, whatever the mesh looks like, and bad
/// vertex numbers are refused before anything changes.
#include <MirelAlgorithms/mesh/MeshSimplification.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "MemoryFile.h"
#include "mesh/LiteralMesh.h"

namespace {

using namespace MirelAlgorithms;

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
  for (int left = data.ConsumeIntegralInRange(0, 12); left > 0; --left) {
    Triangle& triangle = mesh.triangles[data.ConsumeIntegral<uint8_t>() % mesh.triangles.size()];
    Vertex& vertex = mesh.vertices[data.ConsumeIntegral<uint8_t>() % mesh.vertices.size()];
    switch (data.ConsumeIntegralInRange(0, 6)) {
      case 0:
        vertex.p = {anyReal<double>(data), anyReal<double>(data), anyReal<double>(data)};
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
            data.ConsumeIntegralInRange(0, 15)
                ? data.ConsumeIntegral<uint8_t>() % static_cast<int>(mesh.vertices.size())
                : data.ConsumeIntegral<int>();
    }
  }
  return mesh;
}

bool same(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b)); }
bool same(const vec3f& a, const vec3f& b) { return same(a.x, b.x) && same(a.y, b.y) && same(a.z, b.z); }
bool isFinite(const vec3f& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

template <class Mesh>
bool allFinite(const Mesh& mesh) {
  return std::all_of(mesh.vertices.begin(), mesh.vertices.end(), [](const Vertex& v) { return isFinite(v.p); });
}

template <class Mesh>
bool verticesExist(const Mesh& mesh) {
  const auto exists = [&](int number) { return number >= 0 && number < static_cast<int>(mesh.vertices.size()); };
  return std::all_of(mesh.triangles.begin(), mesh.triangles.end(),
                     [&](const Triangle& t) { return std::all_of(t.v, t.v + 3, exists); });
}

void checkSame(const MeshSimplification& mesh, const literal::Mesh& wanted) {
  MIREL_CHECK(mesh.vertices.size() == wanted.vertices.size() && mesh.triangles.size() == wanted.triangles.size());
  for (std::size_t i = 0; i < mesh.vertices.size(); ++i) MIREL_CHECK(same(mesh.vertices[i].p, wanted.vertices[i].p));
  for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
    const Triangle &a = mesh.triangles[i], &b = wanted.triangles[i];
    MIREL_CHECK(std::equal(a.v, a.v + 3, b.v) && a.attr == b.attr && a.deleted == b.deleted && same(a.n, b.n));
    for (int j = 0; j < 3; ++j) MIREL_CHECK(same(a.uvs[j], b.uvs[j]));
  }
}

bool same(const Triangle& a, const Triangle& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// The steps of which simplification consists, on fans that may be anything.
void callSteps(FuzzedDataProvider& data, MeshSimplification& mesh) {
  const auto number = [&] { return data.ConsumeIntegralInRange(-1, static_cast<int>(mesh.vertices.size())); };
  for (int left = data.ConsumeIntegralInRange(0, 8); left > 0 && !mesh.vertices.empty(); --left) {
    const int a = number(), b = number();
    Vertex fan = mesh.vertices[static_cast<std::size_t>(std::clamp(a, 0, static_cast<int>(mesh.vertices.size()) - 1))];
    if (data.ConsumeIntegralInRange(0, 7) == 0) fan.tstart = data.ConsumeIntegral<int>();
    if (data.ConsumeIntegralInRange(0, 7) == 0) fan.tcount = data.ConsumeIntegralInRange(-2, 1000);
    std::vector<int> deleted(data.ConsumeIntegralInRange<std::size_t>(0, 12), data.ConsumeBool());
    const vec3f p{anyReal<double>(data), anyReal<double>(data), anyReal<double>(data)};
    const std::vector<Triangle> before = mesh.triangles;
    vec3f found = p;
    bool refusal = false;
    switch (data.ConsumeIntegralInRange(0, 3)) {
      case 0:
        refusal = refused([&] { mesh.calculate_error(a, b, found); });
        MIREL_CHECK(refusal == (std::min(a, b) < 0 || std::max(a, b) >= static_cast<int>(mesh.vertices.size())));
        break;
      case 1:
        refusal = refused([&] { mesh.flipped(p, b, a, fan, fan, deleted); });
        MIREL_CHECK(std::count(deleted.begin(), deleted.end(), 0) + std::count(deleted.begin(), deleted.end(), 1) ==
                    static_cast<long>(deleted.size()));
        break;
      case 2:
        refusal = refused([&] { mesh.update_uvs(b, fan, p, deleted); });
        break;
      default:
        int count = 0;
        refusal = refused([&] { mesh.update_triangles(b, fan, deleted, count); });
        MIREL_CHECK(count >= 0 && count <= static_cast<int>(deleted.size()));
    }
    if (refusal)
      MIREL_CHECK(std::equal(before.begin(), before.end(), mesh.triangles.begin(),
                             [](const Triangle& x, const Triangle& y) { return same(x, y); }) &&
                  same(found, p));
    MIREL_CHECK(verticesExist(mesh));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  FuzzedDataProvider data(bytes, size);
  const bool lossless = data.ConsumeBool(), verbose = data.ConsumeBool();
  const int target = data.ConsumeIntegralInRange(-1, 130);
  const double aggressiveness = data.ConsumeBool() ? 7.0 : anyReal<double>(data);
  MeshSimplification mesh = anyMesh(data);
  literal::Mesh wanted{mesh.triangles, mesh.vertices, mesh.refs};
  const bool fine = verticesExist(mesh), finite = allFinite(mesh);
  MIREL_CHECK(refused([&] {
                lossless ? mesh.simplify_mesh_lossless(verbose) : mesh.simplify_mesh(target, aggressiveness, verbose);
              }) != fine);
  if (fine) lossless ? wanted.simplifyLossless() : wanted.simplify(target, aggressiveness);
  checkSame(mesh, wanted);
  if (!fine) return 0;

  MIREL_CHECK(verticesExist(mesh) && (!finite || allFinite(mesh)));
  mesh.update_mesh(0);
  callSteps(data, mesh);
  const MemoryFile file;
  mesh.write_obj(file.name());
  const std::string text = file.read();
  long faces = 0;
  for (std::size_t at = text.find("\nf "); at != text.npos; at = text.find("\nf ", at + 1)) ++faces;
  MIREL_CHECK(faces == std::count_if(mesh.triangles.begin(), mesh.triangles.end(),
                                     [](const Triangle& t) { return !t.deleted; }));
  return 0;
}
