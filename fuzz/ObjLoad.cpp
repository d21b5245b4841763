/// Whole OBJ files: what is loaded is what a plain reader makes of them, and what is written reads back the same.
#include <MirelAlgorithms/mesh/internal/ObjLines.h>
#include <mesh/MeshBits.h>
#include <mesh/ObjFile.h>

#include <string>

#include "Check.h"

namespace {

using namespace MirelAlgorithms;

// Line after line, by `sscanf` and C strings alone.
struct PlainReader {
  MeshSimplification mesh;
  std::vector<vec3f> coordinates;
  std::vector<std::array<int, 3>> textured;
  int material = -1;

  static std::string name(const std::string& line) {
    constexpr const char* blanks = " \t\n\v\f\r";
    const std::string text = line.c_str() + std::min<std::size_t>(7, std::strlen(line.c_str()));
    const std::size_t first = text.find_first_not_of(blanks), last = text.find_last_not_of(blanks);
    return first == text.npos ? "" : text.substr(first, last + 1 - first);
  }

  void read(const std::string& line, bool withTexture) {
    vec3f p;
    if (line.starts_with("v ") && obj::scanVertex(line, p)) mesh.vertices.emplace_back().p = p;
    if (line.starts_with("vt ") && obj::scanCoordinate(line, p)) coordinates.push_back(p);
    if (line.starts_with("mtllib")) mesh.mtllib = name(line);
    if (line.starts_with("usemtl")) use(name(line));
    if (line[0] == 'f') readFace(line, withTexture);
  }

  void use(const std::string& wanted) {
    auto& known = mesh.materials;
    material = static_cast<int>(std::find(known.begin(), known.end(), wanted) - known.begin());
    if (material == static_cast<int>(known.size())) known.push_back(wanted);
  }

  void readFace(const std::string& line, bool withTexture) {
    obj::Face face;
    MIREL_CHECK(obj::scanFace(line, face));  // the line test has said so
    Triangle& triangle = mesh.triangles.emplace_back();
    for (std::size_t i = 0; i < 3; ++i) triangle.v[i] = static_cast<int>(face.vertices[i] - 1LL);
    triangle.material = material;
    if (!face.hasCoordinates || !withTexture) return;
    triangle.attr = Triangle::hasTexture;
    textured.push_back(face.coordinates);
  }

  void fillTexture() {
    for (std::size_t i = 0; i < textured.size(); ++i)
      for (std::size_t j = 0; j < 3; ++j)
        if (const int k = textured[i][j]; k >= 1 && k <= static_cast<int>(coordinates.size()))
          mesh.triangles[i].uvs[j] = coordinates[static_cast<std::size_t>(k - 1)];
  }
};

// Faces with texture coordinates are written in a form that the loader does not read, and lines end after 999 bytes.
void checkRoundTrip(MeshSimplification& mesh) {
  const ObjFile first(""), second("");
  mesh.write_obj(first.name());
  const bool longName = std::any_of(mesh.materials.begin(), mesh.materials.end(),
                                    [](const std::string& name) { return name.size() > 900; });
  if (longName || (!mesh.triangles.empty() && mesh.triangles[0].attr)) return;
  MeshSimplification again;
  again.load_obj(first.name(), true);
  MIREL_CHECK(again.vertices.size() == mesh.vertices.size() && again.triangles.size() == mesh.triangles.size());
  again.write_obj(second.name());
  MIREL_CHECK(second.read() == first.read());
}

}  // namespace

void feed(FuzzedDataProvider& data) {
  const std::string input = data.ConsumeRemainingBytesAsString();
  const bool withTexture = !input.empty() && input[0] & 1;
  PlainReader plain;
  std::string text;
  for (std::size_t at = 1, size; at < input.size(); at += size) {
    constexpr std::size_t longest = 999;
    size = std::min({input.find('\n', at) + 1 - at, input.size() - at, longest});
    std::string piece = input.substr(at, size);
    if (piece[0] == 'f' && !isReadableFace(piece.c_str())) piece[0] = '#';  // the loader would wait for ever
    plain.read(piece, withTexture);
    text += piece;
  }
  plain.fillTexture();

  const ObjFile file(text);
  MeshSimplification mesh;
  mesh.load_obj(file.name(), withTexture);
  MIREL_CHECK(bits(mesh) == bits(plain.mesh));
  MIREL_CHECK(mesh.materials == plain.mesh.materials && mesh.mtllib == plain.mesh.mtllib);
  MIREL_CHECK(file.read() == text);
  checkRoundTrip(mesh);
}
