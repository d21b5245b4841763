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

// Whether the loader takes all faces as they stand, and numbers count from the start of the file.
bool isPlain(const std::string& file) {
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    if (line.size() > 990) return false;
    if (line[0] == 'f' && (!isReadableFace(line.c_str()) || line.find('-') != std::string::npos)) return false;
  }
  return true;
}

TEST(OtherReader, readsTheSameFromFilesOfManyPrograms) {
  const char* folder = std::getenv("MIREL_OBJ");
  if (!folder) GTEST_SKIP() << "MIREL_OBJ names no folder";
  tinyobj::ObjReaderConfig config;
  config.triangulate = false;
  int compared = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    const std::string file = entry.path().string();
    tinyobj::ObjReader other;
    if (!file.ends_with(".obj") || !isPlain(file) || !other.ParseFromFile(file, config)) continue;
    SCOPED_TRACE(file);
    MeshSimplification mesh;
    mesh.load_obj(file.c_str(), true);
    const std::vector<float>& coordinates = other.GetAttrib().vertices;
    ASSERT_EQ(mesh.vertices.size() * 3, coordinates.size());
    for (std::size_t i = 0; i < mesh.vertices.size(); ++i) {
      const double position[] = {mesh.vertices[i].p.x, mesh.vertices[i].p.y, mesh.vertices[i].p.z};
      for (std::size_t k = 0; k < 3; ++k)
        ASSERT_NEAR(position[k], coordinates[3 * i + k], 1e-6 * std::abs(position[k])) << "vertex " << i;
    }
    std::size_t triangle = 0;
    for (const tinyobj::shape_t& shape : other.GetShapes()) {
      std::size_t first = 0;
      for (const std::size_t count : shape.mesh.num_face_vertices) {
        ASSERT_LT(triangle, mesh.triangles.size());
        for (std::size_t i = 0; i < 3; ++i)
          ASSERT_EQ(mesh.triangles[triangle].v[i], shape.mesh.indices[first + i].vertex_index) << "face " << triangle;
        first += count;
        ++triangle;
      }
    }
    EXPECT_EQ(mesh.triangles.size(), triangle);
    ++compared;
  }
  EXPECT_GE(compared, 8);
}

}  // namespace
}  // namespace MirelAlgorithms
