#include "ToolTest.h"

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

const std::string corners = "v 0 0 0\nv 4 0 0\nv 4 3 0\nv 0 3 0\n";   // four lines
const std::string samples = "t_s,a,b\n0,1,2\n1,2,3\n2,3,5\n3,4,8\n";  // five lines
const std::string utf16("\xFF\xFEv\0", 4), byteOrderMark = "\xEF\xBB\xBF";
const cv::Mat1w depth = (cv::Mat1w(3, 3) << 800, 800, 801, 0, 800, 65535, 802, 803, 801);

std::string record(const std::string& command, const std::string& options) {
  return R"({"schema":1,"command":")" + command + R"(","options":{)" + options + "}}";
}

/// The folder holds results of an earlier run.
class HostileFiles : public ToolTest {
 protected:
  HostileFiles() {
    write("good.csv", samples);
    write("good.json", poseFile({unitPose, unitPose}));
    write("good.png", texture(0, 0, 1, {64, 48}));
    writePrecious({"made.obj", "made.png", "made.csv", "out/run.json"});
  }

  struct BadFile {
    std::string bytes, said;  // after the name
  };
  /// @param command  which reads the file "in"
  void expectBad(const std::string& command, const std::vector<BadFile>& cases) const {
    for (const auto& [bytes, said] : cases) {
      SCOPED_TRACE(bytes.substr(0, 200));
      write("in", bytes);
      expectRefused(command, {{"--out out", "in" + said}});
    }
  }
};

TEST_F(HostileFiles, everyPrefixIsReadOrRefused) {
  const std::string mesh =
      byteOrderMark + "mtllib a.mtl\n" + corners + "v 1 1 \\\n1\r\nvt 0 1\nusemtl m\nf 1/1/1 2/1/1 3/1/1\nf -1 1 -2\n";
  const std::string poses = poseFile({unitPose, unitPose});
  const std::string again = record("smooth", R"("table":["good.csv"],"window":["5"])");
  const struct {
    std::string name, bytes, arguments;
    std::size_t least;  // length of the shortest prefix that may do
  } cases[] = {{"in.obj", mesh, "mesh in.obj made.obj --ratio 1 --out out", mesh.find("3/1/1") + 1},
               {"in.csv", samples, "smooth in.csv --window 5 --out out", samples.size() - 5},
               {"in.json", poses, "frustum in.json --out out", poses.size()},
               {"in.png", encoded(".png", depth), "depth in.png made.png --set smoothDenseRadius=1 --out out", 60},
               {"in.pgm", encoded(".pgm", depth), "depth in.pgm made.png --set smoothDenseRadius=1 --out out", 28},
               {"run.json", again, "--config run.json --out out", again.size()}};
  for (const auto& [name, bytes, arguments, least] : cases) {
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
      SCOPED_TRACE(name + " " + std::to_string(length));
      write(name, bytes.substr(0, length));
      const auto before = contents();
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

TEST_F(HostileFiles, badMeshesAreRefusedWithTheirLine) {
  const std::string command = "mesh in made.obj --ratio 1";
  expectBad(command, {{"", ": empty"},
                      {utf16, ": text of 16 bits"},
                      {corners + std::string("f 1 2\0 3\n", 9), ":5: a zero byte"},
                      {byteOrderMark + repeated("v 1 2 3\n", 1000), ": no faces (1000 vertices)"}});
  const BadFile lines[] = {
      {"v 1 1e400 0", "'1e400' given"},
      {"v 1 nan 0", "'nan' given"},
      {"v 123456789012345678901234567890123 0 0", "'123456789012345678901234567890123' given"},
      {"v 0,5 0 0", "'0,5' given"},
      {"v 1 2", "a number is missing, three numbers"},
      {"vt", "a number is missing, one or two numbers"},
      {"f 1 2", "2 corners given"},
      {"f 1 2 3" + std::string(990, ' ') + " 9f", "'9f' given"},
      {"f 1//2/3 2 3", "'1//2/3' given"},
      {"f 0 1 2", "vertex 0 given"},
      {"f -5 1 2", "vertex -5 given, 4 lines before this one"},
      {"f 1 2 5", "vertex 5 given, the file has 4"},
      {"f 1 2 4294967297", "vertex 4294967297 given"},
      {"f 99999999999999999999999999999999999999 1 2", "vertex 9223372036854775807 given"},
      {"f 1/1/1 2/1/1 3/1/1", "texture coordinate 1 given, the file has 0"},
      {"f" + repeated(" 1", 1'000'001), "more than a million corners"},
      {"usemtl " + std::string(1200, 'm'), "a shorter name expected"},
      {"f 1 \\\n2 \\\nx", "'x' given"},
  };
  for (const auto& [line, problem] : lines) {
    const std::string first = line.substr(0, line.find('\n'));
    const std::string shown = first.size() > 60 ? first.substr(0, 60) + "..." : first;
    expectBad(command, {{corners + "f 1 2 3\n" + line + "\nf 1 2 3\n", ":6: '" + shown + "': " + problem}});
  }
}

TEST_F(HostileFiles, badTablesAreRefusedWithTheirLine) {
  expectBad("smooth in --window 5", {{utf16, ": text of 16 bits per character, UTF-8 expected"},
                                     {"\n \n# nothing\n", ": no row"},
                                     {"t_s,a,b\n", ": no row"},
                                     {samples + "4,1e400,1\n", ":6: column 2 (a): '1e400' given"},
                                     {samples + "4,nan,1\n", ":6: column 2 (a): 'nan' given"},
                                     {samples + "4,-1e301,1\n", ":6: column 2 (a): -1e+301 given"},
                                     {samples + "4,,1\n", ":6: column 2 (a): nothing given"},
                                     {samples + "4," + std::string(5000, 'x') + ",1\n",
                                      ":6: column 2 (a): '" + std::string(40, 'x') + "...' given"},
                                     {samples + std::string("4,1\0,1\n", 7), ":6: column 2 (a): "},
                                     {samples + "4,1\n", ":6: 2 cells, 3 expected"},
                                     {samples + "4,1,2,3\n", ":6: 4 cells, 3 expected"},
                                     {samples + "4,\"1,2\n", ":6: quotes"},
                                     {samples + "3,1,1\n", ":6: column 1 (t_s): time stamp 3 after 3"},
                                     {samples + "-9e18,1,1\n", ":6: column 1 (t_s): time stamp -9e18 after 3"},
                                     {samples + repeated("4,", 100'000), ":6: more than 10000 cells"},
                                     {"a,b\n1,2\n3,4\n", ": 2 samples, at least 4 expected for a window of 5"},
                                     {"name\nx\ny\nz\n", ": no column of numbers"}});
  expectBad("points in made.csv", {{"x_px,y_px,x_m,y_m\n1,2,3,4\n", ":1: no column z_m"},
                                   {"x,y,z,a,b\n1,2,3,4,5\n", ":1: no column x_px"},
                                   {"1,2,3,4\n", ": 4 columns, at least 5 expected"},
                                   {"1,2,3,4,2e9\n", ":1: column 5: 2e+09 given"}});
  expectBad("visibility in good.json",
            {{"x,y,z,pose\n0,0,0,0\n0,0,0,0.5\n", ":3: column 4 (pose): 0.5 given"},
             {"x,y,z,pose\n0,0,0,1e99\n", ":2: column 4 (pose): 1e99"},
             {"x,y,z,pose\n0,0,0,7\n", ":2: column 4 (pose): good.json has no pose with the number 7"},
             {"x,y,z,pose\n0,2e9,0,0\n", ":2: column 2 (y): 2e+09 given"},
             {"x,y,z,when\n1,2,3,4\n", ":1: no column pose"},
             {"1,2,3,100\n", ": no heads; --columns expected"}});
}

TEST_F(HostileFiles, badPosesAreRefused) {
  const std::string rotation = R"("quaternion_xyzw": [0, 0, 0, 1])", place = R"("position": [0, 0, 0])";
  const auto matrix = [](const std::string& elements) { return poseFile({"{\"matrix\": " + elements + "}"}); };
  expectBad(
      "frustum in",
      {{repeated("[", 100'000), ": no file of poses: nested too deeply"},
       {"{\"schema\":1,\n\"poses\":[1e400]}", ": no valid JSON: number overflow"},
       {"{\"schema\": 1,\n\"poses\":\n [NaN]}", ":3: no valid JSON: invalid literal"},
       {"{\"schema\":1,\n\"poses\":[\"\xC3\x28\"]}", ":2: no valid JSON"},
       {"[]", ": no file of poses, an object with \"schema\": 1"},
       {R"({"schema": 2, "poses": []})", ": no file of poses, an object with \"schema\": 1"},
       {R"({"schema": 1})", ": poses: a list of at least one pose"},
       {R"({"schema": 1, "poses": {}})", ": poses: a list of at least one pose"},
       {poseFile({}), ": poses: a list of at least one pose"},
       {poseFile({unitPose}), ": poses: 1 pose, at least 2 expected"},
       {poseFile({unitPose, "[1]"}), ": poses[1]: a list given, an object expected"},
       {poseFile({unitPose, "{}"}), ": poses[1]: no pose; matrix, or position"},
       {poseFile({"{" + rotation + "}"}), ": poses[0]: no position"},
       {poseFile({"{" + place + "}"}), ": poses[0]: no quaternion_xyzw"},
       {poseFile({"{\"matrix\": [], " + rotation + "}"}), ": poses[0]: both matrix and position"},
       {matrix("[1, 2, 3]"), ": poses[0].matrix: 3 numbers given, 16 expected"},
       {matrix("1"), ": poses[0].matrix: number given, a list of 16"},
       {matrix("[1,0,0,5, 0,1,0,6, 0,0,1,7, 0,0,0,1]"), ": poses[0].matrix: elements 3, 7, 11, 15 are 5, 6, 7, 1"},
       {matrix("[2,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1]"), ": poses[0].matrix: axes of lengths 2, 1, 1"},
       {matrix("[-1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1]"), ": poses[0].matrix: a mirrored pose"},
       {matrix("[1,0,0,0, 0,1,0,0, 0,0,1,0, 0,1e10,0,1]"), ": poses[0].matrix[13]: 1e+10 given"},
       {poseFile({R"({"position": [0, "a", 0], )" + rotation + "}"}), ": poses[0].position[1]: string given"},
       {poseFile({"{" + place + R"(, "quaternion_xyzw": [0, 0, 0, 2]})"}),
        ": poses[0].quaternion_xyzw: a quaternion of length 2"},
       {poseFile({"{" + place + R"(, "quaternion_xyzw": [0, 0, 0, 0]})"}),
        ": poses[0].quaternion_xyzw: a quaternion of length 0"},
       {poseFile({unitPose, R"({"number": 0})"}), ": poses[1]: number 0 is that of poses[0], too"},
       {poseFile({R"({"number": 1.5})"}), ": poses[0].number: 1.5 given"},
       {poseFile({R"({"number": 4294967296})"}), ": poses[0].number: 4294967296 given"},
       {poseFile({R"({"name": 3})"}), ": poses[0].name: a text"},
       {poseFile({R"({"name": "a\nb"})"}), ": poses[0].name: a text"}});
}

TEST_F(HostileFiles, badRecordsAreRefused) {
  expectBad("--config in", {{"", ": not a run record"},
                            {repeated("[", 100'000), ": not a run record"},
                            {R"({"schema":1,"command":7,"options":{}})", ": not a run record"},
                            {R"({"schema":1,"command":"smooth","options":{},"inputs":[5]})", ": not a run record"},
                            {record("--version", ""), ": records a run of '--version'"},
                            {record(R"(help\nme)", ""), ": records a run of 'help me'"},
                            {record("smooth", R"("table":"good.csv")"), ": option 'table'"},
                            {record("smooth", R"("table":[])"), ": table"},
                            {record("smooth", R"("table":["good.csv"],"window":["1e9"])"), ": "}});
  expectBad("track --config in", {{record("smooth", ""), ": records a run of 'smooth', not of 'track'"}});
  for (const char* name : {"a", "%"}) {
    write("in", record("track", R"("frames":[")" + repeated(name, 300'000) + R"("])"));
    expectRefused("--config", {{"in --out out", repeated(name, 100)}});
  }
}

TEST_F(HostileFiles, badPicturesAreRefused) {
  // Heads that promise 65535 x 65535 and 40000 x 40000 pixels.
  const std::string jpeg(
      "\xFF\xD8\xFF\xC0\x00\x11\x08\xFF\xFF\xFF\xFF\x03\x01\x11\x00\x02\x11\x01\x03\x11\x01\xFF\xDA\x00\x02\x00\xFF"
      "\xD9",
      28);
  const std::string png("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\x9C\x40\0\0\x9C\x40\x08\0\0\0\0IEND", 33);
  expectBad("features in", {{"P5 -3 3 255\n0", ": not an image"},
                            {"P5 20000 20000 255\n0", ": 20000 x 20000 pixels, at most 100 megapixels"},
                            {"P4 60000 60000\n0", ": not an image"},  // OpenCV's own limit
                            {jpeg, ": 65535 x 65535 pixels, at most 100 megapixels"},
                            {png, ": 40000 x 40000 pixels, at most 100 megapixels"},
                            {"\x89PNG\r\n\x1A\n" + std::string(100, '\xFF'), ": not an image"},
                            {samples, ": not an image"}});
  expectBad("depth in made.png", {{encoded(".png", cv::Mat1b(4, 4, uchar{7})), ": 8-bit grey given, 16-bit grey"},
                                  {encoded(".png", cv::Mat(4, 4, CV_16UC3, cv::Scalar(7))), ": 16-bit in 3 channels"},
                                  {"P5 20000 20000 65535\n0", ": 20000 x 20000 pixels, at most 100 megapixels"}});
  expectBad("track in", {{std::string("\0\0\0\x18", 4) + "ftypmp42", ": neither an image nor a video"},
                         {"#EXTM3U\nfile:///dev/zero\n", ": neither an image nor a video"}});
  expectBad("track good.png in", {{"no picture", ": not an image"}});
  expectBad("texture good.png in", {{encoded(".png", depth).substr(0, 60), ": the image ends too early"}});
}

TEST_F(HostileFiles, halfPicturesAreRefused) {
  for (const std::string format : {".png", ".jpg", ".bmp", ".tiff", ".webp", ".pgm"}) {
    const std::string bytes = encoded(format, texture(0, 0, 1, {64, 48}));
    for (const std::size_t missing : {7 * bytes.size() / 8, bytes.size() / 2, bytes.size() / 16, std::size_t{20}}) {
      SCOPED_TRACE(format);
      expectBad("features in", {{bytes.substr(0, bytes.size() - missing), ": "}});
    }
  }
}

TEST_F(HostileFiles, whatIsNoFileIsRefusedAsInput) {
  std::filesystem::create_directory("folder");
  std::filesystem::create_symlink("nowhere", "link");
  std::filesystem::create_symlink("loop", "loop");
  const Refusal files[] = {{"folder", ": a folder"},
                           {"/dev/null", ": no file with content"},
                           {"/dev/zero", ": no file with content"},
                           {"link", ": no such file"},
                           {"loop", ": cannot be read"},
                           {"good.csv/x", ": "},
                           {std::string(5000, 'x'), ": cannot be read"},
                           {repeated("%d", 50'000), ": "}};
  for (const std::string command :
       {"mesh @ made.obj --ratio 1", "smooth @", "frustum @", "features @", "depth @ made.png", "track @",
        "track good.png @", "imu @", "points @ made.csv", "texture @ good.png", "visibility good.csv @"}) {
    const std::size_t at = command.find('@');
    for (const auto& [file, said] : files) {
      expectRefused(command.substr(0, at), {{file + command.substr(at + 1) + " --out out", file + said}});
    }
  }
}

}  // namespace
