#include <MirelAlgorithms/mesh/MeshSimplification.h>
#include <gtest/gtest.h>
#include <mesh/ObjFile.h>

#include <climits>
#ifndef _WIN32
#include <unistd.h>
#endif

namespace MirelAlgorithms {
namespace {

Triangle triangle(int a, int b, int c, int material) {
  Triangle t;
  t.v[0] = a, t.v[1] = b, t.v[2] = c;
  t.material = material;
  t.uvs[1] = {0.5, 1e-5, 7};
  return t;
}

std::string written(MeshSimplification& mesh) {
  const ObjFile file("what was there before");
  mesh.write_obj(file.name());
  return file.read();
}

TEST(ObjWriting, linesAsDescribed) {
  MeshSimplification mesh;
  EXPECT_EQ(written(mesh), "");
  mesh.mtllib = "x y.mtl";
  mesh.materials = {"a", std::string("b\0c", 3)};
  for (const double x : {1.0, 1234567.0, -0.1}) mesh.vertices.emplace_back().p = {x, 0.12345678, -0.0};
  const std::string head = "mtllib x y.mtl\nv 1 0.123457 -0\nv 1.23457e+06 0.123457 -0\nv -0.1 0.123457 -0\n";
  EXPECT_EQ(written(mesh), head);

  // Numbers without a name get no line, and are remembered all the same.
  for (const int material : {-1, 0, 0, 1, 0, -1, 2, INT_MIN, 0}) mesh.triangles.push_back(triangle(0, 1, 2, material));
  mesh.triangles.push_back(triangle(-1, INT_MAX, INT_MIN, 0));
  mesh.triangles[4].deleted = 1;
  const std::string face = "f 1 2 3\n";
  EXPECT_EQ(written(mesh), head + face + "usemtl a\n" + face + face + "usemtl b\n" + face + face + face + face +
                               "usemtl a\n" + face + "f 0 -2147483648 -2147483647\n");
}

// The first triangle decides, also when it is deleted; corners are counted over those that are written.
TEST(ObjWriting, texture) {
  MeshSimplification mesh;
  for (int i = 0; i < 3; ++i) mesh.triangles.push_back(triangle(i, i, i, -1));
  mesh.triangles[0].attr = Triangle::hasTexture | 1;
  mesh.triangles[0].deleted = 1;
  const std::string corners = "vt 0 0\nvt 0.5 1e-05\nvt 0 0\n";
  EXPECT_EQ(written(mesh), corners + corners + "f 2/1 2/2 2/3\nf 3/4 3/5 3/6\n");
  mesh.triangles[0].attr = 1;
  mesh.triangles[1].attr = Triangle::hasTexture;
  EXPECT_EQ(written(mesh), "f 2 2 2\nf 3 3 3\n");
}

TEST(ObjWriting, blocksJoinWithoutSeams) {
  MeshSimplification mesh;
  mesh.materials = {std::string(300000, 'm')};
  std::string wanted;
  for (int i = 0; i < 40000; ++i) {
    mesh.vertices.emplace_back().p = {i * 0.5, 0, 0};
    std::ostringstream line;
    line << "v " << i * 0.5 << " 0 0\n";
    wanted += line.str();
  }
  mesh.triangles = {triangle(0, 1, 2, 0)};
  EXPECT_EQ(written(mesh), wanted + "usemtl " + mesh.materials[0] + "\nf 1 2 3\n");
}

#ifndef _WIN32
TEST(ObjWritingDeathTest, fileThatCannotBeOpenedEndsTheProcess) {
  const auto write = [](const char* name) {
    dup2(STDERR_FILENO, STDOUT_FILENO);
    MeshSimplification().write_obj(name);
  };
  EXPECT_EXIT(write("/no/such.obj"), testing::ExitedWithCode(0),
              "^write_obj: can't write data file \"/no/such.obj\"\\.\n$");
  EXPECT_EXIT(write(nullptr), testing::ExitedWithCode(0), "^write_obj: can't write data file");
}
#endif

}  // namespace
}  // namespace MirelAlgorithms
