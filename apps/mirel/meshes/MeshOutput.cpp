#include "meshes/MeshOutput.h"

#include "Errors.h"

#include <algorithm>
#include <cmath>
#include <fstream>

namespace mirel {

namespace {

struct LineCounts {
  std::size_t vertices = 0, textures = 0, faces = 0;
  bool whole = true;  ///< whether the last line has its end

  bool operator==(const LineCounts&) const = default;
};

LineCounts countLines(const std::filesystem::path& path) {
  LineCounts counts{.whole = false};
  std::ifstream stream(path, std::ios::binary);
  for (std::string line; std::getline(stream, line);) {
    counts.vertices += line.starts_with("v ");
    counts.textures += line.starts_with("vt ");
    counts.faces += line.starts_with("f ");
    counts.whole = !stream.eof();
  }
  return counts;
}

LineCounts expectedLines(const MirelAlgorithms::MeshSimplification& mesh) {
  constexpr int textured = 4;
  const bool hasTexture = !mesh.triangles.empty() && (mesh.triangles[0].attr & textured) != 0;
  return {mesh.vertices.size(), hasTexture ? 3 * mesh.triangles.size() : 0, mesh.triangles.size()};
}

}  // namespace

// The library's writer ends the process when it cannot open the file, so that is tried first. It does not tell whether
// the disk took all of it.
void writeMesh(const StagedFile& file, MirelAlgorithms::MeshSimplification& mesh) {
  file.write({});
  mesh.write_obj(file.path().string().c_str());
  if (countLines(file.path()) == expectedLines(mesh)) return;
  throw UsageError(file.target().string() + ": cannot be written: the disk does not take it");
}

double roundingInFile(const MirelAlgorithms::MeshSimplification& mesh) {
  double largest = 0;
  for (const MirelAlgorithms::Vertex& vertex : mesh.vertices) {
    largest = std::max({largest, std::abs(vertex.p.x), std::abs(vertex.p.y), std::abs(vertex.p.z)});
  }
  return largest > 0 ? 0.5 * std::pow(10, std::floor(std::log10(largest)) - 5) : 0;
}

}  // namespace mirel
