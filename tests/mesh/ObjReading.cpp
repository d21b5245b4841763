#include <MirelAlgorithms/mesh/MeshSimplification.h>
#include <gtest/gtest.h>
#include <mesh/ObjFile.h>

#include <clocale>
#include <csignal>
#include <cstring>
#ifndef _WIN32
#include <unistd.h>
#endif

namespace MirelAlgorithms {
namespace {

using namespace std::string_literals;

// "1,2,3" of a vertex, "[a b c material attr]" of a triangle, with its texture coordinates if it has the bit.
std::string describe(const MeshSimplification& mesh) {
  std::ostringstream text;
  for (const Vertex& v : mesh.vertices) text << v.p.x << ',' << v.p.y << ',' << v.p.z << ' ';
  for (const Triangle& t : mesh.triangles) {
    text << '[' << t.v[0] << ' ' << t.v[1] << ' ' << t.v[2] << ' ' << t.material << ' ' << t.attr;
    if (t.attr)
      for (const vec3f& uv : t.uvs) text << ' ' << uv.x << ',' << uv.y << ',' << uv.z;
    text << (t.deleted ? "x]" : "]");
  }
  for (const std::string& name : mesh.materials) text << '<' << name << '>';
  return text.str() + mesh.mtllib;
}

TEST(ObjReading, linesAsDescribed) {
  const std::string spaces(1000, ' ');
  const std::pair<std::string, const char*> cases[] = {
      {"", ""},
      {"\xEF\xBB\xBFv 1 2 3\n\nvn 1 2 3\n# v 1 2 3\no x\nvp 1 2 3\nV 1 2 3\n v 1 2 3\nl 1 2\n", ""},
      {"v 1 2 3\nv -1e-3 +.5 0x10 9 9 9\r\nv\t4 5 6\nv 1 2\nv 1 2 x\nv  7 8 9", "1,2,3 -0.001,0.5,16 7,8,9 "},
      {"v inf -nan 1e400\nv nan(1) 2 3\nv 0x 2 3\nv 1 2 4.9e-324\n", "inf,-nan,inf 1,2,4.94066e-324 "},
      {"v 1 2 3\0 4\nv 1 \0 2 3\nv 4 5 6\n"s, "1,2,3 4,5,6 "},
      {"f 1 2 3 4\nf 1// 2// 3//\nf 1//9 2//9 3//9\nf 4/1/9 5/1/9 6/1/9\nf1 2 3\nf-1-2-3\nf 1 2 3/4/5",
       "[0 1 2 -1 0][0 1 2 -1 0][0 1 2 -1 0][3 4 5 -1 0][0 1 2 -1 0][-2 -3 -4 -1 0][0 1 2 -1 0]"},
      {"f 0 -1 2147483647\nf -2147483648 1 1\n", "[-1 -2 2147483646 -1 0][2147483647 0 0 -1 0]"},
      {"usemtl a\nf 1 2 3\nusemtl \t b \r\nf 1 2 3\nusemtl a\nf 1 2 3\nmtllib  x y.mtl \n",
       "[0 1 2 0 0][0 1 2 1 0][0 1 2 0 0]<a><b>x y.mtl"},
      {"usemtl\nf 1 2 3\nusemtlXc\xE9\nusemtl d\0e\nmtllib_m\nusemtl\0 b\nusemtl"s, "[0 1 2 0 0]<><c\xE9><d>m"},
      {"v 1 2 3" + spaces.substr(0, 992) + "v 4 5 6\n# " + spaces + "f 1 2 3\n", "1,2,3 4,5,6 "},
      {"# " + spaces.substr(0, 997) + "f 1 2 3\nf 4 5 6" + spaces, "[0 1 2 -1 0][3 4 5 -1 0]"},
  };
  for (const auto& [text, wanted] : cases) {
    MeshSimplification mesh;
    mesh.load_obj(ObjFile(text).name(), false);
    EXPECT_EQ(describe(mesh), wanted) << testing::PrintToString(text);
  }
}

// Triangle i takes entry i of the faces with texture coordinates, whether it is that face or not.
TEST(ObjReading, textureByTriangleNumber) {
  const ObjFile file(
      "vt 0.5 0.25\nvt 1 2 3\nvt\t4 4\nvt 7\nf 1/1/1 2/2/1 3/1/1\nf 1 2 3\nf 1/2/1 2/9/1 3/0/1\nf 1/1/1 2/1/1 3/1/1\n");
  MeshSimplification mesh;
  mesh.load_obj(file.name(), true);
  EXPECT_EQ(describe(mesh),
            "[0 1 2 -1 4 0.5,0.25,0 1,2,0 0.5,0.25,0][0 1 2 -1 0][0 1 2 -1 4 0.5,0.25,0 0.5,0.25,0 0.5,0.25,0]"
            "[0 1 2 -1 4 0,0,0 0,0,0 0,0,0]");
  EXPECT_EQ(mesh.triangles[1].uvs[0].x, 1);
  mesh.load_obj(file.name(), false);
  EXPECT_EQ(mesh.triangles[0].attr, 0);
}

TEST(ObjReading, againKeepsNames) {
  const ObjFile named("mtllib m\nusemtl a\nf 1 2 3\nv 1 2 3\n"), plain("f 1 2 3\n");
  MeshSimplification mesh;
  for (const ObjFile* file : {&named, &named, &plain}) mesh.load_obj(file->name(), false);
  EXPECT_EQ(describe(mesh), "[0 1 2 -1 0]<a><a>m");
}

// Larger than what is read at once, every line in another place.
TEST(ObjReading, blocksJoinWithoutSeams) {
  std::string text;
  for (int i = 0; i < 40000; ++i) text += "v " + std::to_string(i) + (i % 3 ? " 0.5 1\n" : " 0.5 1.000\r\n");
  MeshSimplification mesh;
  mesh.load_obj(ObjFile(text).name(), false);
  ASSERT_EQ(mesh.vertices.size(), 40000);
  for (int i = 0; i < 40000; ++i) ASSERT_TRUE(mesh.vertices[i].p.x == i && mesh.vertices[i].p.z == 1) << i;
}

#ifndef _WIN32
TEST(ObjReadingDeathTest, otherFacesAreShownAndWaitedAt) {
  const ObjFile file("v 1 2 3\nf 1/1 2/2 3/3\nv 1 2 3\n");
  const auto load = [&] {
    dup2(STDERR_FILENO, STDOUT_FILENO);
    alarm(1);
    MeshSimplification().load_obj(file.name(), false);
  };
  EXPECT_EXIT(load(), testing::KilledBySignal(SIGALRM), "^unrecognized sequence\nf 1/1 2/2 3/3\n\n$");
}
#endif

TEST(ObjReading, whiteSpaceIsCutOffInPlace) {
  char nothing[] = " \t\r\n\v\f", text[] = "  a b \xA0\t";
  MeshSimplification mesh;
  EXPECT_STREQ(mesh.trimwhitespace(nothing), "");
  EXPECT_STREQ(mesh.trimwhitespace(text), "a b \xA0");
  EXPECT_EQ(mesh.trimwhitespace(text), text + 2);
}

TEST(ObjReading, numbersUnderAnotherLocale) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  if (!std::setlocale(LC_ALL, "de_DE.UTF-8")) GTEST_SKIP() << "no locale with a decimal comma";
  MeshSimplification mesh;
  mesh.load_obj(ObjFile("v 0.5 +1.25 1e+1\n").name(), false);
  const ObjFile copy("");
  mesh.write_obj(copy.name());
  const bool comma = std::strcmp(std::localeconv()->decimal_point, ",") == 0;
  std::setlocale(LC_ALL, before.c_str());
  EXPECT_TRUE(comma);
  EXPECT_EQ(copy.read(), "v 0.5 1.25 10\n");
}

}  // namespace
}  // namespace MirelAlgorithms
