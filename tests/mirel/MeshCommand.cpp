#include "ToolTest.h"

#include <MirelAlgorithms/mesh/MeshSimplification.h>

namespace {

using MirelAlgorithms::MeshSimplification;

using MeshCommand = ToolTest;

TEST_F(MeshCommand, meshIsThatOfTheLibrary) {
  write("in.obj", "mtllib a.mtl\nusemtl stone\n" + gridMesh(20, 1));
  for (const double share : {0.5, 0.05}) {
    const nlohmann::json numbers =
        resultOf(cv::format("mesh in.obj out.obj --ratio %g --aggressiveness 5 --picture", share));
    MeshSimplification mesh;
    mesh.load_obj("in.obj", true);
    mesh.simplify_mesh(static_cast<int>(std::lround(800 * share)), 5, false);
    mesh.write_obj("expected.obj");
    EXPECT_EQ(read("out.obj"), read("expected.obj"));
    EXPECT_EQ(numbers["triangles_before"], 800);
    EXPECT_EQ(numbers["triangles_asked"], std::lround(800 * share));
    EXPECT_EQ(numbers["triangles_after"], mesh.triangles.size());
    EXPECT_EQ(numbers["vertices_after"], mesh.vertices.size());
    EXPECT_EQ(numbers["open_edges_before"], 80);
    EXPECT_EQ(numbers["materials"], 1);
    EXPECT_GT(numbers["distance"]["mean"], 0);
    EXPECT_GE(numbers["distance"]["rms"], numbers["distance"]["mean"]);
    EXPECT_GE(numbers["distance"]["max"], numbers["distance"]["rms"]);
  }
  EXPECT_EQ(files("mirel-out"), (std::set<std::string>{"mesh.png", "report.html", "run.json"}));
  EXPECT_EQ(cv::imread("mirel-out/mesh.png").cols, 1400);
}

TEST_F(MeshCommand, itSaysWhyItStopped) {
  write("bent.obj", gridMesh(10, 1));
  write("closed.obj",
        "v 1 0 0\nv -1 0 0\nv 0 1 0\nv 0 -1 0\nv 0 0 1\nv 0 0 -1\n"
        "f 1 3 5\nf 3 2 5\nf 2 4 5\nf 4 1 5\nf 3 1 6\nf 2 3 6\nf 4 2 6\nf 1 4 6\n");
  const struct {
    const char *arguments, *stopped;
  } cases[] = {{"bent.obj out.obj --triangles 200", "not_more_than_asked"},
               {"bent.obj out.obj --triangles 99", "target_reached"},
               {"bent.obj out.obj --triangles 10 --aggressiveness 0", "passes_used_up"},
               {"closed.obj out.obj --triangles 7 --aggressiveness 12", "below_target"},
               {"bent.obj out.obj --lossless", "nothing_left"}};
  for (const auto& [arguments, stopped] : cases) {
    EXPECT_EQ(resultOf(std::string("mesh ") + arguments)["stopped"], stopped) << arguments;
  }
}

TEST_F(MeshCommand, distanceIsThatOfTheSurfaces) {
  write("flat.obj", gridMesh(10));
  const nlohmann::json flat = resultOf("mesh flat.obj out.obj --lossless");
  EXPECT_LT(flat["triangles_after"], 20);
  EXPECT_LT(flat["distance_from_simplified"]["max"], 1e-12);  // what is left lies in the plane
  EXPECT_NEAR(flat["diagonal"], std::sqrt(200), 1e-12);
  // A triangle 3 above a square of twice its area is what goes first.
  write("two.obj", "v 0 0 3\nv 10 0 3\nv 0 10 3\nf 1 2 3\nv 0 0 0\nv 10 0 0\nv 10 10 0\nv 0 10 0\nf 4 5 6\nf 4 6 7\n");
  const nlohmann::json numbers = resultOf("mesh two.obj out.obj --triangles 2");
  const nlohmann::json& there = numbers["distance_to_simplified"];
  EXPECT_NEAR(there["mean"], 1, 1e-4) << numbers.dump(2);
  EXPECT_NEAR(there["rms"], std::sqrt(3), 1e-4);
  EXPECT_NEAR(there["max"], 3, 1e-12);
  EXPECT_NEAR(numbers["distance_from_simplified"]["max"], 0, 1e-12);
  EXPECT_NEAR(numbers["distance"]["mean"], 0.5, 1e-4);
  EXPECT_NEAR(numbers["distance"]["rms"], std::sqrt(1.5), 1e-4);
  EXPECT_NEAR(numbers["distance"]["max_of_diagonal"], 3 / std::sqrt(209), 1e-12);
}

TEST_F(MeshCommand, legalFormsGiveTheSameMeshAsThePlainOne) {
  const std::string corners = "v 0 0 0\nv 4 0 0\nv 4 3 0\nv 0 3 0\nv 2 1 5\n";
  const std::string plain = corners + "f 1 2 3\nf 1 3 4\nf 1 2 5\n", textures = "vt 0 0\nvt 1 0\nvt 1 1\n";
  const std::string textured = corners + textures + "f 1/1/1 2/2/1 3/3/1\nf 1/1/1 3/3/1 5/2/1\n";
  const std::string blanks(998, ' '), comment = "# " + std::string(980, 'x'),
                                      longName = "usemtl " + std::string(980, 'm') + "\n";
  const struct {
    const char* what;
    std::string text, same;
  } cases[] = {
      {"polygons", corners + "f 1 2 3 4\nf 1 2 5\n", plain},
      {"relative indices", corners + "f -5 -4 -3\nf 1 -3 -2\nf -5 2 5\n", plain},
      {"corners such as 7/3", corners + textures + "f 1/1 2/2 3/3\nf 1/1 3/3 5/2\n", textured},
      {"corners such as 7/3", corners + "f 1/ 2/ 3/\nf 1 3 4\nf 1 2 5\n", plain},
      {"mixed corners", corners + "f 1//1 2 3//1\nf 1 3 4\nf 1 2 5\n", plain},
      {"blanks", "  v 0 0 0\nv\t4 0 0\n" + plain.substr(16), plain},
      {"line ends", corners + "f 1 2 3\rf 1 3 4\rf 1 2 5", plain},
      {"continued lines", corners + "f 1 2 \\\r\n3\nf 1 \\\n3 \\\n4\nf 1 2 5\n", plain},
      {"long lines", comment + comment + "v 9 9 9\n" + plain, plain},
      {"long lines", "o" + blanks + "f 1 2 3\nvn" + blanks + "v 9 9 9\n" + plain, plain},
      {"long lines", corners + longName + "f 1 2" + blanks + "3\nf 1 3 4\n", corners + longName + "f 1 2 3\nf 1 3 4\n"},
      {"byte order mark", "\xEF\xBB\xBF" + plain, plain},
      {"texture coordinates with one value", corners + "vt 0\nvt 1 0\nvt 1 1" + textured.substr(textured.find("\nf")),
       textured},
      {"faces without texture coordinates", corners + textures + "f 1/1/1 2/2/1 3/3/1\nf 1 3 5\n",
       corners + textures + "f 1/1/1 2/2/1 3/3/1\nf 1/1/1 3/1/1 5/1/1\n"},
      {"", "v 0 0 0 0.5 0.5 1\r\nv +4e0 0 0 1\r\n" + plain.substr(16), plain},
      {"", plain.substr(0, plain.size() - 1), plain}};
  for (const auto& [what, text, same] : cases) {
    write("in.obj", text);
    write("same.obj", same);
    const nlohmann::json rewritten = resultOf("mesh in.obj out.obj --ratio 1")["rewritten"];
    EXPECT_EQ(rewritten, *what == '\0' ? nlohmann::json::array() : nlohmann::json::array({what}));
    expectSuccess("mesh - same_out.obj --ratio 1 <same.obj");
    EXPECT_EQ(read("out.obj"), read("same_out.obj")) << what;
  }
}

TEST_F(MeshCommand, wrongUsageIsRefused) {
  write("in.obj", gridMesh(2));
  expectRefused("mesh", {{"", "no mesh given"}, {"in.obj", "no name for the simplified mesh"}});
  expectRefused("mesh in.obj out.obj", {{"", "none of --triangles, --ratio, --lossless given"},
                                        {"--triangles 3 --lossless", "2 of --triangles, --ratio, --lossless given"},
                                        {"--triangles 0", "'0' given"},
                                        {"--ratio 0", "--ratio: 0 given"},
                                        {"--ratio nan", "--ratio: nan given"},
                                        {"--ratio 1.1", "--ratio: 1.1 given"},
                                        {"--ratio 1 --aggressiveness nan", "--aggressiveness: nan given"},
                                        {"--lossless --aggressiveness 7", "of no effect with --lossless"}});
}

TEST_F(MeshCommand, nothingIsWrittenWhenNothingIsLeft) {
  write("in.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
  resultOfNothing("mesh in.obj out.obj --lossless --picture", "every one of 1 triangles was collapsed");
  EXPECT_FALSE(exists("out.obj"));
  EXPECT_TRUE(exists("mirel-out/report.html"));
}

}  // namespace
