#include "CommandLine.h"
#include "ToolTest.h"

#include <opencv2/core/utils/logger.hpp>

namespace {

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

std::string encoded(const std::string& ending, const cv::Mat& image) {
  std::vector<uchar> bytes;
  cv::imencode(ending, image, bytes);
  return {bytes.begin(), bytes.end()};
}

std::string littleEndian(unsigned value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> 8 * i & 0xFF);
  return text;
}

/// Heads of pictures that promise `side` x `side` pixels, and nothing behind them.
std::string tiffHead(unsigned side) {
  const auto entry = [](unsigned tag, unsigned value) {
    return littleEndian(tag, 2) + littleEndian(4, 2) + littleEndian(1, 4) + littleEndian(value, 4);
  };
  return std::string("II*\0\x08\0\0\0", 8) + littleEndian(9, 2) + entry(256, side) + entry(257, side) + entry(258, 16) +
         entry(259, 1) + entry(262, 1) + entry(273, 8) + entry(277, 1) + entry(278, side) + entry(279, 100) +
         littleEndian(0, 4) + std::string(100, '\0');
}
std::string bmpHead(unsigned side) {
  return "BM" + littleEndian(54, 4) + littleEndian(0, 4) + littleEndian(54, 4) + littleEndian(40, 4) +
         littleEndian(side, 4) + littleEndian(side, 4) + littleEndian(1, 2) + littleEndian(24, 2) +
         std::string(24, '\0');
}

const std::string corners = "v 0 0 0\nv 4 0 0\nv 4 3 0\nv 0 3 0\n";   // four lines
const std::string samples = "t_s,a,b\n0,1,2\n1,2,3\n2,3,5\n3,4,8\n";  // five lines
const std::string view = R"({"position":[0,0,0],"quaternion_xyzw":[0,0,0,1]})";
const std::string views = R"({"schema":1,"poses":[)" + view + "," + view + "]}";
const std::string record = R"({"schema":1,"command":"smooth","options":{"table":["good.csv"],"window":["5"]}})";
const cv::Mat1w depth = (cv::Mat1w(3, 3) << 800, 800, 801, 0, 800, 65535, 802, 803, 801);

/// Runs the tool's code in this process, a run of the program itself takes most of its time to start. The folder holds
/// results of an earlier run.
class HostileFiles : public ToolTest {
 protected:
  HostileFiles() {
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    std::filesystem::current_path(path(""));
    write("good.csv", samples);
    write("good.json", views);
    write("good.png", texture(0, 0, 1, {64, 48}));
    std::filesystem::create_directory("out");
    for (const char* name : {"made.obj", "made.png", "made.csv", "out/run.json"}) write(name, "precious");
  }
  ~HostileFiles() override { std::filesystem::current_path(before_); }

  static ToolResult runHere(const std::string& arguments) {
    std::istringstream words(arguments);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = mirel::runCommandLine({std::istream_iterator<std::string>(words), {}});
    std::string output = testing::internal::GetCapturedStdout();
    return {status, std::move(output), testing::internal::GetCapturedStderr()};
  }

  /// One line that names the file, and nothing else that is new.
  void expectRefusal(const ToolResult& result, const std::string& said,
                     const std::map<std::string, std::string>& before) const {
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errorLines(), 1) << result.errors;
    EXPECT_EQ(result.errors.rfind("mirel", 0), 0u) << result.errors;
    EXPECT_NE(result.errors.find(said), std::string::npos) << said << " is not in " << result.errors;
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(contents("") == before);
  }

 private:
  std::filesystem::path before_ = std::filesystem::current_path();
};

TEST_F(HostileFiles, everyPrefixIsReadOrRefused) {
  const struct {
    std::string name, bytes, arguments;
    std::size_t least;  // length of the shortest prefix that may do
  } cases[] = {
      {"in.obj", "mtllib a.mtl\n" + corners + "vt 0 1\nusemtl m\nf 1/1/1 2/1/1 3/1/1\nf -1 1 -2\n",
       "mesh in.obj made.obj --ratio 1 --out out", 70},
      {"in.csv", samples, "smooth in.csv --window 5 --out out", samples.size() - 5},
      {"in.json", views, "frustum in.json --out out", views.size()},
      {"in.png", encoded(".png", depth), "depth in.png made.png --set smoothDenseRadius=1 --out out", 60},
      {"in.pgm", encoded(".pgm", depth), "depth in.pgm made.png --set smoothDenseRadius=1 --out out", 28},
      {"run.json", record, "--config run.json --out out", record.size()},
  };
  for (const auto& [name, bytes, arguments, least] : cases) {
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
      SCOPED_TRACE(name + " " + std::to_string(length));
      write(name, bytes.substr(0, length));
      const auto before = contents("");
      const ToolResult result = runHere(arguments);
      EXPECT_TRUE(result.status == 0 || length < bytes.size()) << result.errors;
      if (result.status == 2) {
        expectRefusal(result, name, before);
        continue;
      }
      EXPECT_GE(length, least) << "read, though it cannot be whole";
      EXPECT_NE(read("out/run.json"), "precious");
    }
  }
}

TEST_F(HostileFiles, badFilesAreRefusedInOneLineThatNamesThem) {
  const std::string mesh = "mesh in made.obj --ratio 1 --out out", smooth = "smooth in --window 5 --out out";
  const std::string frustum = "frustum in --out out", config = "--config in --out out";
  const std::string features = "features in --out out", dense = "depth in made.png --out out";
  const std::string points = "points in made.csv --out out", scan = "visibility in good.json --out out";
  const std::string face = corners + "f 1 2 3\n", pose = R"({"schema":1,"poses":[{"matrix":)";
  const auto options = [](const std::string& text) {
    return R"({"schema":1,"command":"smooth","options":{)" + text + "}}";
  };
  const struct {
    std::string arguments, bytes, said;
  } cases[] = {
      {mesh, "", "in: empty"},
      {mesh, "\xEF\xBB\xBF", "in: no faces"},
      {mesh, std::string("\xFF\xFEv\0 \0", 6), "in: text of 16 bits"},
      {mesh, corners + std::string("f 1 2\0 3\n", 9), "in:5: a zero byte"},
      {mesh, encoded(".png", depth), "in:"},
      {mesh, repeated("v 1 2 3\n", 1000), "in: no faces (1000 vertices)"},
      {mesh, face + "v 1e400 0 0\n", "in:6: "},
      {mesh, face + "v nan 0 0\n", "in:6: "},
      {mesh, face + "v 0 -inf 0\n", "in:6: "},
      {mesh, face + "v 0x10 0 0\n", "in:6: "},
      {mesh, face + "v 123456789012345678901234567890123 0 0\n", "in:6: "},
      {mesh, face + "v 0,5 0 0\n", "in:6: "},
      {mesh, face + "v 1 2\n", "in:6: "},
      {mesh, face + "v 1 2" + std::string(2000, ' ') + "\n", "in:6: "},
      {mesh, face + "vt\n", "in:6: "},
      {mesh, face + "f\n", "in:6: 'f': 0 corners"},
      {mesh, face + "f 1\n", "in:6: 'f 1': 1 corners"},
      {mesh, face + "f 1 2\n", "in:6: 'f 1 2': 2 corners"},
      {mesh, face + "f f\n", "in:6: 'f f': 'f' given"},
      {mesh, face + "f 1 2 3" + std::string(990, ' ') + " 9f", "in:6: "},
      {mesh, face + "f 1 2" + std::string(1100, ' ') + "x\n", "in:6: "},
      {mesh, face + "f 1//2/3 2 3\n", "in:6: "},
      {mesh, face + "f 1.5 2 3\n", "in:6: "},
      {mesh, face + "f 0 1 2\n", "in:6: "},
      {mesh, face + "f -5 1 2\n", "in:6: "},
      {mesh, face + "f 1 2 5\n", "in:6: "},
      {mesh, face + "f 1 2 4294967297\n", "in:6: "},
      {mesh, face + "f 99999999999999999999999999999999999999 1 2\n", "in:6: "},
      {mesh, face + "f 1/1/1 2/1/1 3/1/1\n", "in:6: "},
      {mesh, face + "f" + repeated(" 1", 1'000'001) + "\n", "in:6: "},
      {mesh, face + "usemtl " + std::string(1200, 'm') + "\n", "in:6: "},
      {mesh, face + "f 1 \\\n2 \\\nx\nf 1 2 3\n", "in:6: "},
      {smooth, "", "in: empty"},
      {smooth, "\n\n#\n", "in: no row"},
      {smooth, "t_s,a,b\n", "in: no row"},
      {smooth, samples + "4,1e400,1\n", "in:6: column 2 (a): '1e400'"},
      {smooth, samples + "4,nan,1\n", "in:6: column 2 (a): 'nan'"},
      {smooth, samples + "4,0x1f,1\n", "in:6: column 2 (a): '0x1f'"},
      {smooth, samples + std::string("4,1\0,1\n", 7), "in:6: column 2 (a): "},
      {smooth, samples + "4,1\n", "in:6: 2 cells, 3 expected"},
      {smooth, samples + "4,1,2,3\n", "in:6: 4 cells, 3 expected"},
      {smooth, samples + "4,\"1,2\n", "in:6: quotes"},
      {smooth, samples + "1,1,1\n", "in:6: column 1 (t_s): time stamp 1 after 3"},
      {smooth, samples + "-9e18,1,1\n", "in:6: "},
      {smooth, samples + repeated("4,", 100'000), "in:6: more than 10000 cells"},
      {smooth, "a,b\n1,2\n3,4\n", "in: 2 samples"},
      {smooth, "name\nx\ny\nz\n", "in: no column of numbers"},
      {points, "x_px,y_px\n1,2\n", "in:1: no column x_m"},
      {points, "1,2,3,4\n", "in: 4 columns, at least 5"},
      {points, "1,2,3,4,1e300\n", "in:1: column 5: 1e+300"},
      {scan, "x,y,z,pose\n0,0,0,0.5\n", "in:2: column 4 (pose): 0.5"},
      {scan, "x,y,z,pose\n0,0,0,1e99\n", "in:2: column 4 (pose): 1e99"},
      {scan, "x,y,z,pose\n0,0,0,7\n", "in:2: column 4 (pose): good.json has no pose with the number 7"},
      {frustum, repeated("[", 100'000), "in: no file of poses: nested too deeply"},
      {frustum, repeated("[", 40) + repeated("]", 40), "in: no file of poses"},
      {frustum, repeated("{\"a\":", 100'000), "in: no file of poses: nested too deeply"},
      {frustum, "\xEF\xBB\xBF", "in:1: no valid JSON"},
      {frustum, std::string("{\"schema\":1,\0", 13) + views.substr(1), "in:1: no valid JSON"},
      {frustum, "{\"schema\":1,\n\"poses\":[1e400]}", "in: no valid JSON: number overflow"},
      {frustum, "{\"schema\":1,\n\"poses\":[NaN]}", "in:2: no valid JSON"},
      {frustum, "{\"schema\":1,\n\"poses\":[\"\xC3\x28\"]}", "in:2: no valid JSON"},
      {frustum, R"({"schema":"1","poses":[]})", "in: no file of poses"},
      {frustum, R"({"schema":1,"poses":{}})", "in: poses: a list"},
      {frustum, R"({"schema":1,"poses":[[1]]})", "in: poses[0]: a list given"},
      {frustum, pose + "7}]}", "in: poses[0].matrix: number given"},
      {frustum, pose + "[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0]}]}", "in: poses[0].matrix: 15 numbers"},
      {frustum, pose + "[1,0,0,0,0,1,0,0,0,0,-1,0,0,0,0,1]}]}", "in: poses[0].matrix: a mirrored pose"},
      {frustum, pose + "[1,0,0,0,0,1,0,0,0,0,1,0,0,1e300,0,1]}]}", "in: poses[0].matrix[13]: 1e+300"},
      {frustum, pose + "[1,0,0,0,0,1,0,0,0,0,1,0,0,0,null,1]}]}", "in: poses[0].matrix[14]: null"},
      {frustum, R"({"schema":1,"poses":[{"position":[0,0,0],"quaternion_xyzw":[0,0,0,0]}]})", "length 0"},
      {frustum, R"({"schema":1,"poses":[{"number":99999999999}]})", "in: poses[0].number: 99999999999"},
      {frustum, R"({"schema":1,"poses":[{"name":"a\nb"}]})", "in: poses[0].name"},
      {frustum, R"({"schema":1,"poses":[{"number":1},{"number":1}]})", "in: poses[0]: no pose"},
      {config, "", "in: not a run record"},
      {config, repeated("[", 100'000), "in: not a run record"},
      {config, R"({"schema":1,"command":7,"options":{}})", "in: not a run record"},
      {config, R"({"schema":1,"command":"--version","options":{}})", "in: records a run of '--version'"},
      {config, R"({"schema":1,"command":"help\nme","options":{}})", "in: records a run of 'help me'"},
      {config, R"({"schema":1,"command":"smooth","options":{},"inputs":[5]})", "in: not a run record"},
      {config, options(R"("table":"good.csv")"), "in: option 'table'"},
      {config, options(R"("table":[])"), "in: table"},
      {config, options(R"("table":["good.csv"],"window":["1e9"])"), "in: "},
      {config, R"({"schema":1,"command":"track","options":{"frames":[")" + std::string(300'000, 'a') + R"("]}})",
       "aaaa"},
      {config, R"({"schema":1,"command":"track","options":{"frames":[")" + repeated("%", 300'000) + R"("]}})", "%%%%"},
      {features, "", "in: empty"},
      {features, "P5", "in: not an image"},
      {features, "P5 4294967297 1 255\n0", "in: not an image"},
      {features, "P5 -3 3 255\n0", "in: not an image"},
      {features, "P5 20000 20000 255\n0", "in: 20000 x 20000 pixels, at most 100 megapixels"},
      {features, "P4 60000 60000\n0", "in: not an image"},  // OpenCV's own limit
      {features, tiffHead(20000), "in: 20000 x 20000 pixels, at most 100 megapixels"},
      {features, bmpHead(20000), "in: 20000 x 20000 pixels, at most 100 megapixels"},
      {features, encoded(".jpg", texture(0, 0, 1, {64, 48})).substr(0, 500), "in: "},
      {features, "\x89PNG\r\n\x1A\n" + std::string(100, '\xFF'), "in: not an image"},
      {features, "RIFF\xFF\xFF\xFF\xFFWEBPVP8 ", "in: not an image"},
      {features, "GIF89a" + std::string(20, '\xFF'), "in: not an image"},
      {features, samples, "in: not an image"},
      {dense, encoded(".png", cv::Mat1b(4, 4, uchar{7})), "in: 8-bit grey given"},
      {dense, encoded(".png", cv::Mat(4, 4, CV_16UC3, cv::Scalar(7))), "in: 16-bit in 3 channels given"},
      {dense, tiffHead(20000), "in: 20000 x 20000 pixels, at most 100 megapixels"},
      {dense, "P5 3 3 65535\n0", "in: not an image"},
      {"track in --out out",
       std::string("\0\0\0\x18"
                   "ftypmp42\0\0\0\0",
                   16),
       "in: neither an image nor a video"},
      {"track in --out out", "#EXTM3U\nfile:///dev/zero\n", "in: "},
      {"track in good.png --out out", "no picture", "in: not an image"},
      {"texture good.png in --out out", encoded(".png", depth).substr(0, 60), "in: the image ends too early"},
  };
  for (const auto& [arguments, bytes, said] : cases) {
    SCOPED_TRACE(arguments + ": " + bytes.substr(0, 200));
    write("in", bytes);
    const auto before = contents("");
    expectRefusal(runHere(arguments), said, before);
  }
}

TEST_F(HostileFiles, whatIsNoFileIsRefusedAsInput) {
  std::filesystem::create_directory("folder");
  std::filesystem::create_symlink("nowhere", "link");
  std::filesystem::create_symlink("loop", "loop");
  const std::string commands[] = {
      "mesh @ made.obj --ratio 1 --out out", "smooth @ --out out", "frustum @ --out out", "features @ --out out",
      "depth @ made.png --out out",          "track @ --out out",  "imu @ --out out",     "points @ made.csv --out out",
      "track good.png @ --out out"};
  const auto before = contents("");
  for (const std::string& command : commands) {
    for (const std::string& file : {std::string("folder"), std::string("/dev/null"), std::string("/dev/full"),
                                    std::string("/dev/zero"), std::string("link"), std::string("loop"),
                                    std::string("good.csv/x"), std::string(5000, 'x'), repeated("%d", 50'000)}) {
      const std::size_t at = command.find('@');
      SCOPED_TRACE(command.substr(0, at) + file.substr(0, 100));
      expectRefusal(runHere(command.substr(0, at) + file + command.substr(at + 1)), file.substr(0, 100), before);
    }
  }
}

TEST_F(HostileFiles, oneLineEvenForNamesWithLineEnds) {
  const auto before = contents("");
  testing::internal::CaptureStderr();
  EXPECT_EQ(mirel::runCommandLine({"track", "first\nsecond", "good.png"}), 2);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "mirel track: first second: no such file\n");
  EXPECT_TRUE(contents("") == before);
}

TEST_F(HostileFiles, longLinesAreOneLine) {
  const struct {
    const char *begin, *middle;
    int times;
    const char* end;
    int triangles;
  } cases[] = {{"f 1 2", " ", 1200, "3", 2},  {"f", " 1 2 3", 200, "", 599},  {"#", "f 1 2 3 ", 200, "", 1},
               {"o", " ", 998, "f 1 2 3", 1}, {"vn", " ", 997, "v 9 9 9", 1}, {"usemtl ", "m", 980, "", 1}};
  for (const auto& [begin, middle, times, end, triangles] : cases) {
    write("in", corners + begin + repeated(middle, times) + end + "\nf 1 2 3\n");
    const ToolResult result = runHere("mesh in made.obj --ratio 1 --out out --json");
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.json()["triangles_before"], triangles) << begin << middle << end;
  }
}

}  // namespace
