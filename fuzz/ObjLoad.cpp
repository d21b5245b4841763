/// Whole OBJ files: what is loaded is what a plain reader makes of them, and what is written reads back the same.
#include <MirelAlgorithms/mesh/MeshSimplification.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "MemoryFile.h"

namespace {

using namespace MirelAlgorithms;

std::vector<std::string> piecesOf(std::string_view text) {
  constexpr std::size_t longest = 999;
  std::vector<std::string> pieces;
  while (!text.empty()) {
    const std::size_t lineFeed = text.find('\n');
    const std::size_t size = std::min({lineFeed == text.npos ? text.size() : lineFeed + 1, longest, text.size()});
    pieces.emplace_back(text.substr(0, size));
    text.remove_prefix(size);
  }
  return pieces;
}

// By `sscanf` and C strings alone.
struct PlainReader {
  std::vector<vec3f> vertices, coordinates;
  std::vector<Triangle> triangles;
  std::vector<std::string> materials;
  std::vector<std::vector<int>> textured;
  std::string library;
  int material = -1;

  static std::string name(const std::string& line) {
    std::string text = line.size() > 7 ? line.c_str() + std::min<std::size_t>(7, std::strlen(line.c_str())) : "";
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.pop_back();
    const auto start = std::find_if(text.begin(), text.end(), [](unsigned char c) { return !std::isspace(c); });
    return {start, text.end()};
  }

  void read(const std::string& line, bool withTexture) {
    vec3f p;
    const char* text = line.c_str();
    if (line.starts_with("v ") && std::sscanf(text, "v %lf %lf %lf", &p.x, &p.y, &p.z) == 3) vertices.push_back(p);
    if (line.starts_with("vt ") && std::sscanf(text, "vt %lf %lf", &p.x, &p.y) == 2)
      coordinates.push_back({p.x, p.y, 0});
    if (line.starts_with("mtllib")) library = name(line);
    if (line.starts_with("usemtl")) use(name(line));
    if (line[0] == 'f') readFace(text, withTexture);
  }

  void use(const std::string& wanted) {
    material = static_cast<int>(std::find(materials.begin(), materials.end(), wanted) - materials.begin());
    if (material == static_cast<int>(materials.size())) materials.push_back(wanted);
  }

  void readFace(const char* line, bool withTexture) {
    int v[3], t[3], n;
    const bool plain = std::sscanf(line, "f %d %d %d", &v[0], &v[1], &v[2]) == 3 ||
                       std::sscanf(line, "f %d// %d// %d//", &v[0], &v[1], &v[2]) == 3 ||
                       std::sscanf(line, "f %d//%d %d//%d %d//%d", &v[0], &n, &v[1], &n, &v[2], &n) == 6;
    const bool both = !plain && std::sscanf(line, "f %d/%d/%d %d/%d/%d %d/%d/%d", &v[0], &t[0], &n, &v[1], &t[1], &n,
                                            &v[2], &t[2], &n) == 9;
    MIREL_CHECK(plain || both);  // the line test has said so
    Triangle& triangle = triangles.emplace_back();
    for (int i = 0; i < 3; ++i) triangle.v[i] = static_cast<int>(v[i] - 1LL);
    triangle.material = material;
    if (!both || !withTexture) return;
    triangle.attr = Triangle::hasTexture;
    textured.push_back({t[0], t[1], t[2]});
  }

  void fillTexture() {
    for (std::size_t i = 0; i < textured.size(); ++i)
      for (std::size_t j = 0; j < 3; ++j)
        if (const int k = textured[i][j]; k >= 1 && k <= static_cast<int>(coordinates.size()))
          triangles[i].uvs[j] = coordinates[static_cast<std::size_t>(k - 1)];
  }
};

bool same(const vec3f& a, const vec3f& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

bool same(const Triangle& a, const Triangle& b) {
  return std::equal(a.v, a.v + 3, b.v) && a.attr == b.attr && a.material == b.material && !a.deleted && !a.dirty &&
         same(a.n, b.n) && std::equal(a.uvs, a.uvs + 3, b.uvs, [](auto& x, auto& y) { return same(x, y); });
}

// Faces with texture coordinates are written in a form that the loader does not read.
void checkRoundTrip(MeshSimplification& mesh) {
  MemoryFile first, second;
  mesh.write_obj(first.name());
  const bool longName = std::any_of(mesh.materials.begin(), mesh.materials.end(),
                                    [](const std::string& name) { return name.size() > 900; });
  if (longName || (!mesh.triangles.empty() && mesh.triangles[0].attr)) return;
  MeshSimplification again;
  again.load_obj(first.name(), true);
  MIREL_CHECK(again.vertices.size() == mesh.vertices.size() && again.triangles.size() == mesh.triangles.size());
  for (std::size_t i = 0; i < mesh.triangles.size(); ++i)
    MIREL_CHECK(std::equal(mesh.triangles[i].v, mesh.triangles[i].v + 3, again.triangles[i].v));
  again.write_obj(second.name());
  MIREL_CHECK(second.read() == first.read());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  if (size == 0) return 0;
  const bool withTexture = bytes[0] & 1;
  PlainReader plain;
  std::string text;
  for (std::string& piece : piecesOf({reinterpret_cast<const char*>(bytes) + 1, size - 1})) {
    if (piece[0] == 'f' && !isReadableFace(piece.c_str())) piece[0] = '#';  // the loader would wait for ever
    plain.read(piece, withTexture);
    text += piece;
  }
  plain.fillTexture();

  const MemoryFile file(text);
  MeshSimplification mesh;
  for (const int round : {1, 2}) {  // names are kept from the file before
    mesh.load_obj(file.name(), withTexture);
    MIREL_CHECK(mesh.mtllib == plain.library);
    MIREL_CHECK(mesh.vertices.size() == plain.vertices.size() && mesh.triangles.size() == plain.triangles.size());
    for (std::size_t i = 0; i < plain.vertices.size(); ++i) MIREL_CHECK(same(mesh.vertices[i].p, plain.vertices[i]));
    if (round == 2) break;
    MIREL_CHECK(mesh.materials == plain.materials);
    for (std::size_t i = 0; i < plain.triangles.size(); ++i) MIREL_CHECK(same(mesh.triangles[i], plain.triangles[i]));
    checkRoundTrip(mesh);
  }
  MIREL_CHECK(file.read() == text);
  return 0;
}
