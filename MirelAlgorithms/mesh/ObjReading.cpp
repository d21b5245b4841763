#include <MirelAlgorithms/mesh/MeshSimplification.h>
#include <MirelAlgorithms/mesh/internal/CLocale.h>
#include <MirelAlgorithms/mesh/internal/LargeVector.h>
#include <MirelAlgorithms/mesh/internal/LinePieces.h>
#include <MirelAlgorithms/mesh/internal/ObjLines.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace MirelAlgorithms {
namespace {

// Tests end the process here, before it writes its counts. GCOVR_EXCL_START
[[noreturn]] void waitForEver(std::string_view line) {
  std::printf("unrecognized sequence\n%s\n", std::string(line).c_str());
  std::fflush(stdout);
  for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}  // GCOVR_EXCL_STOP

// Numbers start at 1 in files. The smallest integer wraps.
int fromZero(int number) { return static_cast<int>(static_cast<unsigned>(number) - 1); }

// Reads line by line into small records: the mesh's own are large, and moved often if their vectors grew with the file.
class ObjReader {
 public:
  ObjReader(MeshSimplification& mesh, bool withTexture) : mesh_(mesh), withTexture_(withTexture) {}

  void read(std::string_view line);
  void fillMesh() const;

 private:
  struct FaceRecord {
    int vertices[3];
    int material;
    bool textured;
  };

  void readPoint(std::string_view line);
  void readFace(std::string_view line);
  std::string name(std::string_view line) const;
  void useMaterial(const std::string& name);
  void fillTexture() const;

  MeshSimplification& mesh_;
  bool withTexture_;
  int material_ = -1;
  std::map<std::string, int> numbers_;  // of materials
  std::vector<vec3f> positions_, coordinates_;
  std::vector<FaceRecord> faces_;
  std::vector<std::array<int, 3>> textured_;  // coordinates of the faces that have them
};

void ObjReader::read(std::string_view line) {
  if (line[0] == 'v')
    readPoint(line);
  else if (line[0] == 'f')
    readFace(line);
  else if (line.starts_with("mtllib"))
    mesh_.mtllib = name(line);
  else if (line.starts_with("usemtl"))
    useMaterial(name(line));
}

void ObjReader::readPoint(std::string_view line) {
  vec3f point;
  if (line.starts_with("v ")) {
    if (obj::readVertex(line, point)) positions_.push_back(point);
  } else if (line.starts_with("vt ")) {
    if (obj::readCoordinate(line, point)) coordinates_.push_back(point);
  }
}

void ObjReader::readFace(std::string_view line) {
  obj::Face face;
  if (!obj::readFace(line, face)) waitForEver(line);
  const auto& v = face.vertices;
  const bool textured = withTexture_ && face.hasCoordinates;
  faces_.push_back({{fromZero(v[0]), fromZero(v[1]), fromZero(v[2])}, material_, textured});
  const auto& t = face.coordinates;
  if (textured) textured_.push_back({fromZero(t[0]), fromZero(t[1]), fromZero(t[2])});
}

// What stands behind the keyword and one more character, up to a zero byte.
std::string ObjReader::name(std::string_view line) const {
  constexpr std::size_t start = 7;
  line = line.substr(0, line.find('\0'));
  std::string text(line.substr(std::min(start, line.size())));
  return mesh_.trimwhitespace(text.data());
}

void ObjReader::useMaterial(const std::string& name) {
  const auto [entry, isNew] = numbers_.try_emplace(name, static_cast<int>(mesh_.materials.size()));
  if (isNew) mesh_.materials.push_back(name);
  material_ = entry->second;
}

void ObjReader::fillMesh() const {
  reserveLarge(mesh_.vertices, positions_.size());
  for (const vec3f& position : positions_) mesh_.vertices.emplace_back().p = position;
  reserveLarge(mesh_.triangles, faces_.size());
  for (const FaceRecord& face : faces_) {
    Triangle& triangle = mesh_.triangles.emplace_back();
    std::copy_n(face.vertices, 3, triangle.v);
    triangle.material = face.material;
    triangle.attr = face.textured ? Triangle::hasTexture : 0;
  }
  fillTexture();
}

// Triangle i takes entry i of the textured faces, whether it is that face or not.
void ObjReader::fillTexture() const {
  const std::size_t count = std::min(textured_.size(), mesh_.triangles.size());
  for (std::size_t i = 0; i < count; ++i)
    for (std::size_t corner = 0; corner < 3; ++corner) {
      const auto number = static_cast<std::size_t>(textured_[i][corner]);
      if (number < coordinates_.size()) mesh_.triangles[i].uvs[corner] = coordinates_[number];
    }
}

}  // namespace

void MeshSimplification::load_obj(const char* filename, bool process_uv) {
  vertices.clear();
  triangles.clear();
  if (!filename || !*filename) return;
  LinePieces lines(filename);
  if (!lines.isOpen()) {
    std::printf("File %s not found!\n", filename);
    return;
  }
  const CLocale numbers;
  ObjReader reader(*this, process_uv);
  for (std::string_view line = lines.next(); !line.empty(); line = lines.next()) reader.read(line);
  reader.fillMesh();
}

char* MeshSimplification::trimwhitespace(char* str) {
  if (!str) return str;
  const auto isSpace = [](char character) { return std::isspace(static_cast<unsigned char>(character)) != 0; };
  while (isSpace(*str)) ++str;
  char* end = str + std::strlen(str);
  if (end == str) return str;
  while (isSpace(end[-1])) --end;
  *end = '\0';
  return str;
}

bool isReadableFace(const char* line) {
  if (!line || line[0] != 'f') return false;
  std::string piece(std::string_view(line).substr(0, LinePieces::longest));
  if (piece.size() < LinePieces::longest) piece += '\n';
  const CLocale numbers;
  obj::Face face;
  return obj::readFace(piece, face);
}

}  // namespace MirelAlgorithms
