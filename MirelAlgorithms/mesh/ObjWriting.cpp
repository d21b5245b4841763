#include <MirelAlgorithms/mesh/MeshSimplification.h>
#include <MirelAlgorithms/mesh/internal/ShortNumber.h>
#include <MirelAlgorithms/mesh/internal/TextFile.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <string>

namespace MirelAlgorithms {
namespace {

// "KEYWORD x y ..."
void writeNumbers(TextFile& file, const char* keyword, std::initializer_list<double> values) {
  char* at = file.at();
  while (*keyword) *at++ = *keyword++;
  for (const double value : values) {
    *at++ = ' ';
    at = writeShortNumber(at, value);
  }
  *at++ = '\n';
  file.advance(at);
}

// A zero byte ends the name.
void writeName(TextFile& file, const char* keyword, const std::string& name) {
  file.write(keyword);
  file.write(name.c_str());
  file.write("\n");
}

char* writeInteger(char* at, int value) { return std::to_chars(at, at + 11, value).ptr; }

// Files count from 1; the largest integer wraps.
char* writeVertexNumber(char* at, int number) {
  return writeInteger(at, static_cast<int>(static_cast<unsigned>(number) + 1));
}

void writeFace(TextFile& file, const Triangle& triangle) {
  char* at = file.at();
  *at++ = 'f';
  for (const int number : triangle.v) {
    *at++ = ' ';
    at = writeVertexNumber(at, number);
  }
  *at++ = '\n';
  file.advance(at);
}

// Each corner with its own texture coordinate, from number k.
void writeTexturedFace(TextFile& file, const Triangle& triangle, int k) {
  char* at = file.at();
  *at++ = 'f';
  for (const int number : triangle.v) {
    *at++ = ' ';
    at = writeVertexNumber(at, number);
    *at++ = '/';
    at = writeInteger(at, k++);
  }
  *at++ = '\n';
  file.advance(at);
}

void writeFaces(TextFile& file, const MeshSimplification& mesh, bool textured) {
  int material = -1, k = 1;
  for (const Triangle& triangle : mesh.triangles) {
    if (triangle.deleted) continue;
    if (triangle.material != material) {
      material = triangle.material;
      const auto number = static_cast<std::size_t>(material);
      if (number < mesh.materials.size()) writeName(file, "usemtl ", mesh.materials[number]);
    }
    if (textured)
      writeTexturedFace(file, triangle, k);
    else
      writeFace(file, triangle);
    k += 3;
  }
}

}  // namespace

void MeshSimplification::write_obj(const char* filename) {
  TextFile file(filename);
  if (!file.isOpen()) {
    std::printf("write_obj: can't write data file \"%s\".\n", filename ? filename : "(null)");
    std::exit(0);
  }
  const bool textured = !triangles.empty() && (triangles.front().attr & Triangle::hasTexture) != 0;
  if (!mtllib.empty()) writeName(file, "mtllib ", mtllib);
  for (const Vertex& vertex : vertices) writeNumbers(file, "v", {vertex.p.x, vertex.p.y, vertex.p.z});
  if (textured)
    for (const Triangle& triangle : triangles)
      if (!triangle.deleted)
        for (const vec3f& uv : triangle.uvs) writeNumbers(file, "vt", {uv.x, uv.y});
  writeFaces(file, *this, textured);
}

}  // namespace MirelAlgorithms
