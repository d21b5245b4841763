#include "ToolTest.h"

#include <MirelAlgorithms/mesh/MeshSimplification.h>

namespace {

using MirelAlgorithms::MeshSimplification;

constexpr const char* corners = "v 0 0 0\nv 4 0 0\nv 4 3 0\nv 0 3 0\nv 2 1 5\n";

class MeshCommand : public ToolTest {
 protected:
  /// A square of `cells` x `cells` pairs of triangles, `bend` out of its plane in the middle.
  static std::string grid(int cells, double bend = 0) {
    std::string text;
    for (int y = 0; y <= cells; ++y) {
      for (int x = 0; x <= cells; ++x) {
        text += cv::format("v %d %d %.17g\n", x, y, bend * std::sin(0.9 * x) * std::cos(0.7 * y));
      }
    }
    for (int y = 0; y < cells; ++y) {
      for (int x = 0; x < cells; ++x) {
        const int a = y * (cells + 1) + x + 1, d = a + cells + 1;
        text += cv::format("f %d %d %d\nf %d %d %d\n", a, a + 1, d + 1, a, d + 1, d);
      }
    }
    return text;
  }

  void expectRefused(const std::string& arguments, const std::string& said) const {
    const ToolResult result = run("mesh " + arguments);
    EXPECT_EQ(result.status, 2) << arguments;
    EXPECT_EQ(result.errorLines(), 1) << result.errors;
    EXPECT_NE(result.errors.find(said), std::string::npos) << result.errors;
    EXPECT_FALSE(exists("mirel-out") || exists("out.obj")) << arguments;
  }
};

TEST_F(MeshCommand, meshIsThatOfTheLibrary) {
  write("in.obj", "mtllib a.mtl\nusemtl stone\n" + grid(20, 1));
  for (const double share : {0.5, 0.05}) {
    const ToolResult result = run(cv::format("mesh in.obj out.obj --ratio %g --aggressiveness 5 --json", share));
    ASSERT_EQ(result.status, 0) << result.errors;
    MeshSimplification mesh;
    mesh.load_obj(path("in.obj").string().c_str(), true);
    mesh.simplify_mesh(static_cast<int>(std::lround(800 * share)), 5, false);
    mesh.write_obj(path("expected.obj").string().c_str());
    EXPECT_EQ(read("out.obj"), read("expected.obj"));
    const nlohmann::json numbers = result.json();
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
  EXPECT_EQ(files("mirel-out"), (std::set<std::string>{"report.html", "run.json"}));
}

TEST_F(MeshCommand, itSaysWhyItStopped) {
  write("bent.obj", grid(10, 1));
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
    const ToolResult result = run(std::string("mesh --json ") + arguments);
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.json()["stopped"], stopped) << arguments << result.output;
  }
}

TEST_F(MeshCommand, distanceIsThatOfTheSurfaces) {
  write("flat.obj", grid(10));
  const nlohmann::json flat = run("mesh flat.obj out.obj --lossless --json").json();
  EXPECT_LT(flat["triangles_after"], 20);
  EXPECT_LT(flat["distance_from_simplified"]["max"], 1e-12);  // what is left lies in the plane
  EXPECT_NEAR(flat["diagonal"], std::sqrt(200), 1e-12);
  // A triangle 3 above a square of twice its area is what goes first.
  write("two.obj", "v 0 0 3\nv 10 0 3\nv 0 10 3\nf 1 2 3\nv 0 0 0\nv 10 0 0\nv 10 10 0\nv 0 10 0\nf 4 5 6\nf 4 6 7\n");
  const nlohmann::json numbers = run("mesh two.obj out.obj --triangles 2 --json").json();
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
  const std::string plain = std::string(corners) + "f 1 2 3\nf 1 3 4\nf 1 2 5\n";
  const std::string textured =
      std::string(corners) + "vt 0 0\nvt 1 0\nvt 1 1\nf 1/1/1 2/2/1 3/3/1\nf 1/1/1 3/3/1 5/2/1\n";
  const std::string comment = "# " + std::string(980, 'x');
  const struct {
    const char* what;
    std::string text, same;
  } cases[] = {{"polygons", std::string(corners) + "f 1 2 3 4\nf 1 2 5\n", plain},
               {"relative indices", std::string(corners) + "f -5 -4 -3\nf 1 -3 -2\nf -5 2 5\n", plain},
               {"corners such as 7/3", std::string(corners) + "vt 0 0\nvt 1 0\nvt 1 1\nf 1/1 2/2 3/3\nf 1/1 3/3 5/2\n",
                textured},
               {"corners such as 7/3", std::string(corners) + "f 1/ 2/ 3/\nf 1 3 4\nf 1 2 5\n", plain},
               {"mixed corners", std::string(corners) + "f 1//1 2 3//1\nf 1 3 4\nf 1 2 5\n", plain},
               {"blanks", "  v 0 0 0\nv\t4 0 0\n" + plain.substr(16), plain},
               {"line ends", std::string(corners) + "f 1 2 3\rf 1 3 4\rf 1 2 5", plain},
               {"continued lines", std::string(corners) + "f 1 2 \\\r\n3\nf 1 \\\n3 \\\n4\nf 1 2 5\n", plain},
               {"long lines", comment + comment + "v 9 9 9\n" + plain, plain},
               {"byte order mark", "\xEF\xBB\xBF" + plain, plain},
               {"texture coordinates with one value",
                std::string(corners) + "vt 0\nvt 1 0\nvt 1 1" + textured.substr(textured.find("\nf")), textured},
               {"faces without texture coordinates",
                std::string(corners) + "vt 0 0\nvt 1 0\nvt 1 1\nf 1/1/1 2/2/1 3/3/1\nf 1 3 5\n",
                std::string(corners) + "vt 0 0\nvt 1 0\nvt 1 1\nf 1/1/1 2/2/1 3/3/1\nf 1/1/1 3/1/1 5/1/1\n"},
               {"", "v 0 0 0 0.5 0.5 1\r\nv +4e0 0 0 1\r\n" + plain.substr(16), plain},
               {"", plain.substr(0, plain.size() - 1), plain}};
  for (const auto& [what, text, same] : cases) {
    write("in.obj", text);
    write("same.obj", same);
    const ToolResult result = run("mesh in.obj out.obj --ratio 1 --json");
    ASSERT_EQ(result.status, 0) << what << result.errors;
    EXPECT_EQ(result.json()["rewritten"], *what == '\0' ? nlohmann::json::array() : nlohmann::json::array({what}));
    ASSERT_EQ(run("mesh - same_out.obj --ratio 1 --quiet <same.obj").status, 0);
    EXPECT_EQ(read("out.obj"), read("same_out.obj")) << what;
  }
}

TEST_F(MeshCommand, whatCannotBeReadIsRefusedWithItsLine) {
  const struct {
    std::string line, said;
  } cases[] = {{"f 1 2", "in.obj:6: 'f 1 2': 2 corners given"},
               {"f", "in.obj:6: 'f': 0 corners"},
               {"f f", "in.obj:6: 'f f': 'f' given, corners such as"},
               {"foo 1 2 3", "in.obj:6: 'foo 1 2 3'"},
               {"f 1 2 3 4x", "'4x' given"},
               {"f 1 2 0", "vertex 0 given"},
               {"f 1 2 6", "in.obj:6: 'f 1 2 6': vertex 6 given, the file has 5"},
               {"f 1 2 99999999999999999999999", "in.obj:6: "},
               {"f 1 2 -6", "vertex -6 given, 5 lines before this one"},
               {"f 1/1 2/1 3/1", "texture coordinate 1 given, the file has 0"},
               {"f 1/0 2/1 3/1", "texture coordinate 0 given"},
               {"v 1 2", "in.obj:6: 'v 1 2': a number is missing, three numbers"},
               {"v 1 2 nan", "'nan' given"},
               {"v 1 inf 2", "'inf' given"},
               {"v 1 1e400 2", "'1e400' given"},
               {"v 1,5 2 3", "'1,5' given"},
               {"vt", "in.obj:6: 'vt': a number is missing, one or two numbers"},
               {std::string("# a\0b", 5), "in.obj:6: a zero byte"},
               {"usemtl " + std::string(2000, 'm'), "in.obj:6: 'usemtl mmm"}};
  for (const auto& [line, said] : cases) {
    write("in.obj", corners + line + "\nf 1 2 3\n");
    expectRefused("in.obj out.obj --ratio 0.5", said);
  }
}

TEST_F(MeshCommand, wrongUsageIsRefused) {
  write("in.obj", grid(2));
  write("points.obj", corners);
  write("wide.obj", std::string("\xFF\xFEv\0", 4));
  const struct {
    const char *arguments, *said;
  } cases[] = {{"", "no mesh given"},
               {"in.obj", "no name for the simplified mesh"},
               {"in.obj out.obj", "none of --triangles, --ratio, --lossless given"},
               {"in.obj out.obj --triangles 3 --lossless", "2 of --triangles, --ratio, --lossless given"},
               {"in.obj out.obj --triangles 0", "'0' given"},
               {"in.obj out.obj --ratio 0", "--ratio: 0 given"},
               {"in.obj out.obj --ratio nan", "--ratio: nan given"},
               {"in.obj out.obj --ratio 1.1", "--ratio: 1.1 given"},
               {"in.obj out.obj --ratio 1 --aggressiveness nan", "--aggressiveness: nan given"},
               {"in.obj out.obj --lossless --aggressiveness 7", "of no effect with --lossless"},
               {"in.obj none/out.obj --lossless", "there is no folder none"},
               {"in.obj . --lossless", "a folder"},
               {"points.obj out.obj --lossless", "points.obj: no faces (5 vertices)"},
               {"wide.obj out.obj --lossless", "16 bits per character"},
               {"missing.obj out.obj --lossless", "missing.obj: no such file"},
               {". out.obj --lossless", ".: a folder"}};
  for (const auto& [arguments, said] : cases) expectRefused(arguments, said);
}

TEST_F(MeshCommand, aMeshCanTakeItsOwnPlace) {
  write("in.obj", grid(20, 1));
  ASSERT_EQ(run("mesh in.obj out.obj --triangles 50 --quiet").status, 0);
  const ToolResult result = run("mesh in.obj in.obj --triangles 50 --picture --out out");
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(read("in.obj"), read("out.obj"));
  EXPECT_EQ(cv::imread(path("out/mesh.png").string()).cols, 1400);
  EXPECT_EQ(files("."), (std::set<std::string>{"in.obj", "mirel-out", "out", "out.obj", "stderr", "stdout"}));
}

TEST_F(MeshCommand, nothingIsWrittenWhenNothingIsLeft) {
  write("in.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
  const ToolResult result = run("mesh in.obj out.obj --lossless --picture");
  EXPECT_EQ(result.status, 1) << result.output;
  EXPECT_NE(result.errors.find("every one of 1 triangles was collapsed"), std::string::npos) << result.errors;
  EXPECT_FALSE(exists("out.obj"));
  EXPECT_TRUE(exists("mirel-out/report.html"));
}

TEST_F(MeshCommand, everyPrefixOfAFileEnds) {
  const std::string text =
      "\xEF\xBB\xBF"
      "mtllib a b\nv 0 0 0\nv 1 0 0 \\\n1\r\nv 0 1 0\nvt 1\nusemtl x\nf 1/1 -2 3 1\n";
  for (std::size_t size = 1; size <= text.size(); size += 3) {
    write("in.obj", text.substr(0, size));
    const int status = run("mesh in.obj out.obj --ratio 1 --quiet").status;
    EXPECT_TRUE(status == 0 || status == 2) << size;
  }
}

}  // namespace
