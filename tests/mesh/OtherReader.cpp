// The files that other programs' readers are tested with, as another reader reads them. The environment variable
// MIREL_OBJ names their folder; without it there is nothing to compare.
#include <MirelAlgorithms/mesh/MeshSimplification.h>
#include <gtest/gtest.h>
#include <tiny_obj_loader.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace MirelAlgorithms {
namespace {

std::vector<std::string> objFiles(const char* folder) {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
    if (entry.path().extension() == ".obj") files.push_back(entry.path().string());
  return files;
}

// Whether the loader takes all faces as they stand, and numbers count from the start of the file.
bool isPlain(const std::string& file) {
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    if (line.size() > 990) return false;
    if (line[0] == 'f' && (!isReadableFace(line.c_str()) || line.find('-') != std::string::npos)) return false;
  }
  return true;
}

struct OtherMesh {
  std::vector<float> coordinates;
  std::vector<int> corners;  // the first three of each face
};

bool readByOther(const std::string& file, OtherMesh& mesh) {
  tinyobj::attrib_t attributes;
  std::vector<tinyobj::shape_t> shapes;
  std::vector<tinyobj::material_t> materials;
  std::string warnings, errors;
  constexpr bool triangulate = false;
  if (!tinyobj::LoadObj(&attributes, &shapes, &materials, &warnings, &errors, file.c_str(), nullptr, triangulate))
    return false;
  mesh.coordinates = attributes.vertices;
  for (const tinyobj::shape_t& shape : shapes) {
    std::size_t first = 0;
    for (const std::size_t count : shape.mesh.num_face_vertices) {
      for (std::size_t i = 0; i < 3; ++i) mesh.corners.push_back(shape.mesh.indices[first + i].vertex_index);
      first += count;
    }
  }
  return true;
}

TEST(OtherReader, readsTheSameFromFilesOfManyPrograms) {
  const char* folder = std::getenv("MIREL_OBJ");
  if (!folder) GTEST_SKIP() << "MIREL_OBJ names no folder";
  int compared = 0;
  for (const std::string& file : objFiles(folder)) {
    OtherMesh other;
    if (!isPlain(file) || !readByOther(file, other)) continue;
    SCOPED_TRACE(file);
    MeshSimplification mesh;
    mesh.load_obj(file.c_str(), true);
    ASSERT_EQ(mesh.vertices.size() * 3, other.coordinates.size());
    ASSERT_EQ(mesh.triangles.size() * 3, other.corners.size());
    for (std::size_t i = 0; i < mesh.vertices.size(); ++i) {
      const double position[] = {mesh.vertices[i].p.x, mesh.vertices[i].p.y, mesh.vertices[i].p.z};
      for (std::size_t k = 0; k < 3; ++k)
        ASSERT_NEAR(position[k], other.coordinates[3 * i + k], 1e-6 * std::abs(position[k])) << "vertex " << i;
    }
    for (std::size_t i = 0; i < other.corners.size(); ++i)
      ASSERT_EQ(mesh.triangles[i / 3].v[i % 3], other.corners[i]) << "face " << i / 3;
    ++compared;
  }
  EXPECT_GE(compared, 8);
}

}  // namespace
}  // namespace MirelAlgorithms
