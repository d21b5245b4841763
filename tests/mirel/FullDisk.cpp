#include "ToolTest.h"

namespace {

/// Where results cannot go, and what the user had there.
class FullDisk : public ToolTest {
 protected:
  FullDisk() {
    std::string mesh, points = "x_px,y_px,x_m,y_m,z_m\n", samples = "t_s,gx,gy,gz,ax,ay,az\n";
    for (int i = 0; i < 400; ++i) {
      const int x = i % 20, y = i / 20;
      mesh += cv::format("v %d %d %g\n", x, y, std::sin(0.9 * x) * std::cos(0.7 * y));
      if (x > 0 && y > 0) mesh += cv::format("f %d %d %d\nf %d %d %d\n", i, i + 1, i - 19, i, i - 19, i - 20);
      points += cv::format("%d,%d,%g,%g,2\n", 10 * x, 10 * y, 0.01 * x, 0.01 * y);
      samples += cv::format("%g,0.1,0,%g,0,0,9.8\n", 0.01 * i, 0.01 * x);
    }
    cv::Mat1w slope(48, 64);
    for (int y = 0; y < slope.rows; ++y)
      for (int x = 0; x < slope.cols; ++x) slope(y, x) = static_cast<ushort>(1000 + 37 * x * y);
    const std::string pose = R"({"position":[0,0,0],"quaternion_xyzw":[0,0,0,1]})";
    write("data/in.obj", mesh);
    write("data/points.csv", points);
    write("data/log.csv", samples);
    write("data/poses.json", R"({"schema":1,"poses":[)" + pose + "," + pose + "]}");
    write("data/a.png", texture(0, 0));
    write("data/b.png", texture(5, -3));
    write("data/slope.png", slope);
    for (const char* name : {"made.obj", "made.png", "made.csv", "made.yml", "made.xml.gz", "out/run.json"}) {
      write(std::string("data/") + name, "precious");
    }
  }

  /// Makes the folders that the name needs.
  template <class Content>
  void write(const std::string& name, const Content& content) const {
    std::filesystem::create_directories(path(name).parent_path());
    ToolTest::write(name, content);
  }

  /// Runs "mirel ARGUMENTS" in the folder of data after another command of the shell.
  ToolResult runAfter(const std::string& before, const std::string& arguments) const {
    return shell("(cd data && " + before + " \"" MIREL_TOOL "\" " + arguments + ")");
  }

  void expectRefusal(const ToolResult& result, const std::string& said,
                     const std::map<std::string, std::string>& before) const {
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errorLines(), 1) << result.errors;
    EXPECT_NE(result.errors.find(said), std::string::npos) << result.errors;
    EXPECT_TRUE(contents("data") == before);
  }
};

// A limit on the size of files makes writing fail in the middle of them, as a full disk does.
TEST_F(FullDisk, aDiskThatFillsUpLosesNothing) {
  for (const std::string arguments :
       {"mesh in.obj made.obj --ratio 0.5 --picture", "mesh in.obj in.obj --ratio 0.5", "depth slope.png made.png",
        "depth slope.png slope.png", "points points.csv points.csv --set smoothSparseMode=0x7000",
        "features a.png --descriptors made.yml", "features a.png --descriptors made.xml.gz", "track a.png b.png",
        "texture a.png b.png", "imu log.csv", "smooth log.csv", "frustum poses.json", "settings"}) {
    for (const char* blocks : {"1", "60", "200"}) {
      SCOPED_TRACE(arguments + " " + blocks);
      const auto before = contents("data");
      const ToolResult result =
          runAfter("trap '' XFSZ; ulimit -f " + std::string(blocks) + ";", arguments + " --out out --quiet");
      if (result.status != 0) expectRefusal(result, "cannot be written", before);
      EXPECT_TRUE(result.status != 0 || *blocks != '1');
    }
  }
}

// The pictures beside the descriptors are larger, so these need a small disk of their own.
TEST_F(FullDisk, descriptorsAreWholeOrNotThere) {
  if (shell("unshare -rm mount -t tmpfs none data").status != 0) GTEST_SKIP() << "no file system can be mounted here";
  for (const std::string name : {"new.yml", "new.json", "new.xml.gz"}) {
    const ToolResult result =
        shell("(unshare -rm sh -c 'cd data && mkdir -p disk && mount -t tmpfs -o size=4k none disk && \"" MIREL_TOOL
              "\" features a.png --descriptors disk/" +
              name + " --out out --quiet; echo $?; ls -A disk')");
    EXPECT_EQ(result.output, "2\n");
    EXPECT_EQ(result.errors, "mirel features: --descriptors disk/" + name + ": cannot be written\n");
  }
}

TEST_F(FullDisk, placesThatCannotBeWrittenAreNamed) {
  std::filesystem::create_directories(path("data/blocked/report.html"));
  std::filesystem::create_symlink("/dev/full", path("data/full.obj"));
  const struct {
    std::string arguments, said;
  } cases[] = {{"smooth log.csv --out /proc/made", "--out /proc/made: cannot write there"},
               {"smooth log.csv --out /dev/null/made", "--out /dev/null/made: cannot write there"},
               {"smooth log.csv --out log.csv", "--out log.csv: cannot write there"},
               {"smooth log.csv --out made/" + std::string(300, 'x'), "cannot write there"},
               {"track a.png b.png --out /proc/made", "--out /proc/made: cannot write there"},
               {"mesh in.obj made.obj --ratio 0.5 --out blocked", "blocked/report.html: cannot be written"},
               {"mesh in.obj full.obj --ratio 0.5 --out out", "full.obj: a device"},
               {"mesh in.obj /dev/full --ratio 0.5 --out out", "/dev/full: a device"},
               {"mesh in.obj blocked --ratio 0.5 --out out", "blocked: a folder"},
               {"mesh in.obj /proc/made.obj --ratio 0.5 --out out", "/proc/made.obj: cannot be written"},
               {"depth slope.png missing/made.png --out out", "missing/made.png: cannot be written"},
               {"depth slope.png made.jpg --out out", "made.jpg: holds no 16-bit grey"},
               {"points points.csv in.obj/made.csv --out out", "in.obj/made.csv: cannot be written"},
               {"features a.png --descriptors /proc/made.yml --out out", "/proc/made.yml: cannot be written"},
               {"features a.png --descriptors out/run.json --out out", "would take the place of out/run.json"}};
  for (const auto& [arguments, said] : cases) {
    SCOPED_TRACE(arguments);
    const auto before = contents("data");
    expectRefusal(runAfter("", arguments), said, before);
  }
}

TEST_F(FullDisk, linksAreReplacedNotFollowed) {
  for (const char* name : {"data/links/run.json", "data/links/report.html", "data/links/smoothed.csv"}) {
    std::filesystem::create_directories(path("data/links"));
    std::filesystem::create_symlink("/dev/full", path(name));
  }
  EXPECT_EQ(runAfter("", "smooth log.csv --out links").status, 0);
  EXPECT_FALSE(std::filesystem::is_symlink(path("data/links/report.html")));
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST_F(FullDisk, standardStreamsMayBeFullOrClosed) {
  for (const char* output : {"settings >/dev/full", "settings >&-"}) {
    const ToolResult result = runAfter("", output);
    EXPECT_EQ(result.status, 2) << output;
    EXPECT_EQ(result.errorLines(), 1) << result.errors;
  }

  ASSERT_EQ(runAfter("", "track a.png b.png --out open").status, 0);
  EXPECT_EQ(runAfter("", "track a.png b.png --out closed --log 1500 --quiet <&- >&- 2>&-").status, 0);
  for (const char* name : {"/features.csv", "/matches.csv"}) {
    EXPECT_EQ(read("data/closed" + std::string(name)), read("data/open" + std::string(name))) << "lines of the log";
  }
}

TEST_F(FullDisk, inputsMayComeThroughPipes) {
  const ToolResult direct = runAfter("", "smooth log.csv --out direct --quiet");
  EXPECT_EQ(direct.status, 0) << direct.errors;
  EXPECT_EQ(runAfter("cat log.csv |", "smooth - --out piped --quiet").status, 0);
  EXPECT_EQ(read("data/piped/smoothed.csv"), read("data/direct/smoothed.csv"));
  const auto before = contents("data");
  expectRefusal(runAfter("", "smooth - --out out </dev/null"), "-: empty", before);
  expectRefusal(runAfter("", "smooth - --out out <."), "-: cannot be read", before);
  expectRefusal(runAfter("", "smooth - --out out <&-"), "-: cannot be read", before);
  expectRefusal(runAfter("cat log.csv |", "smooth /dev/stdin --out out"), "/dev/stdin: no file with content", before);
}

}  // namespace
