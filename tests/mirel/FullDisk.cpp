#include "ToolTest.h"

namespace {

/// Where results cannot go, and what the user had there.
class FullDisk : public ToolTest {
 protected:
  FullDisk() {
    std::string points = "x_px,y_px,x_m,y_m,z_m\n", samples = "t_s,gx,gy,gz,ax,ay,az\n";
    for (int i = 0; i < 400; ++i) {
      const int x = i % 20, y = i / 20;
      points += cv::format("%d,%d,%g,%g,2\n", 10 * x, 10 * y, 0.01 * x, 0.01 * y);
      samples += cv::format("%g,0.1,0,%g,0,0,9.8\n", 0.01 * i, 0.01 * x);
    }
    cv::Mat1w slope(48, 64);
    slope.forEach([](ushort& z, const int* at) { z = static_cast<ushort>(1000 + 37 * at[0] * at[1]); });
    write("in.obj", gridMesh(19, 1));
    write("points.csv", points);
    write("log.csv", samples);
    write("poses.json", poseFile({unitPose, unitPose}));
    write("a.png", texture(0, 0));
    write("b.png", texture(5, -3));
    write("slope.png", slope);
    writePrecious({"made.obj", "made.png", "made.csv", "made.yml", "made.xml.gz", "out/run.json"});
  }
};

// A limit on the size of files makes writing fail in the middle of them, as a full disk does.
TEST_F(FullDisk, aDiskThatFillsUpLosesNothing) {
  for (const std::string arguments :
       {"mesh in.obj made.obj --ratio 0.5 --picture", "mesh in.obj in.obj --ratio 0.5", "depth slope.png made.png",
        "depth slope.png slope.png", "points points.csv points.csv --set smoothSparseMode=0x7000",
        "features a.png --descriptors made.yml", "features a.png --descriptors made.xml.gz", "track a.png b.png",
        "texture a.png b.png", "imu log.csv", "smooth log.csv", "frustum poses.json", "settings"}) {
    for (const std::string blocks : {"1", "60", "200"}) {
      SCOPED_TRACE(arguments + " " + blocks);
      const auto before = contents();
      const ToolResult result =
          shell("trap '' XFSZ; ulimit -f " + blocks + "; \"" MIREL_TOOL "\" " + arguments + " --out out --quiet");
      if (result.status != 0) expectRefusal(result, "cannot be written", before);
      EXPECT_TRUE(result.status != 0 || blocks != "1");
    }
  }
}

// The pictures beside the descriptors are larger, so these need a small disk of their own.
TEST_F(FullDisk, descriptorsAreWholeOrNotThere) {
  if (shell("unshare -rm mount -t tmpfs none .").status != 0) GTEST_SKIP() << "no file system can be mounted here";
  for (const std::string name : {"new.yml", "new.json", "new.xml.gz"}) {
    const ToolResult result =
        shell("unshare -rm sh -c 'mkdir -p disk && mount -t tmpfs -o size=4k none disk && \"" MIREL_TOOL
              "\" features a.png --descriptors disk/" +
              name + " --out out --quiet; echo $?; ls -A disk'");
    EXPECT_EQ(result.output, "2\n");
    EXPECT_EQ(result.errors, "mirel features: --descriptors disk/" + name + ": cannot be written\n");
  }
}

TEST_F(FullDisk, placesThatCannotBeWrittenAreNamed) {
  std::filesystem::create_directories("blocked/report.html");
  std::filesystem::create_symlink("/dev/full", "full.obj");
  expectRefused("smooth log.csv --out", {{"/proc/made", "--out /proc/made: cannot write there"},
                                         {"log.csv", "--out log.csv: cannot write there"},
                                         {"log.csv/below/it", "--out log.csv/below/it: cannot write there"},
                                         {"made/" + std::string(300, 'x'), "cannot write there"}});
  expectRefused("track a.png b.png --out", {{"/dev/null/made", "--out /dev/null/made: cannot write there"}});
  expectRefused("mesh in.obj --ratio 0.5", {{"made.obj --out blocked", "blocked/report.html: cannot be written"},
                                            {"full.obj --out out", "full.obj: a device"},
                                            {"blocked --out out", "blocked: a folder"},
                                            {"/proc/made.obj --out out", "/proc/made.obj: cannot be written"},
                                            {"missing/made.obj --out out", "there is no folder missing"}});
  expectRefused("points points.csv", {{"in.obj/made.csv --out out", "in.obj/made.csv: cannot be written"}});
  expectRefused("features a.png --out out --descriptors", {{"/proc/made.yml", "/proc/made.yml: cannot be written"},
                                                           {"out/run.json", "would take the place of out/run.json"}});
  const auto before = contents();
  expectRefusal(runHere({"features", "a.png", "--out", ""}), "--out: nothing given", before);
}

TEST_F(FullDisk, linksAreReplacedNotFollowed) {
  for (const char* name : {"out/run.json", "out/report.html", "out/smoothed.csv"}) {
    std::filesystem::remove(name);
    std::filesystem::create_symlink("/dev/full", name);
  }
  expectSuccess("smooth log.csv --out out");
  EXPECT_FALSE(std::filesystem::is_symlink("out/report.html"));
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST_F(FullDisk, standardStreamsMayBeFullOrClosed) {
  const Refusal cases[] = {{"settings >/dev/full", "cannot write to file"},
                           {"settings >&-", "cannot write to file"},
                           {"smooth log.csv --out out >/dev/full", "standard output: cannot be written"}};
  for (const auto& [arguments, said] : cases) {
    const ToolResult result = run(arguments);
    EXPECT_EQ(result.status, 2) << arguments;
    expectOneLine(result, said);
  }
  expectSuccess("track a.png b.png --out open");
  expectSuccess("track a.png b.png --out closed --log 1500 <&- >&- 2>&-");
  for (const std::string name : {"/features.csv", "/matches.csv"}) {
    EXPECT_EQ(read("closed" + name), read("open" + name)) << "lines of the log";
  }
}

TEST_F(FullDisk, inputsMayComeThroughPipes) {
  expectSuccess("smooth log.csv --out direct");
  EXPECT_EQ(shell("cat log.csv | \"" MIREL_TOOL "\" smooth - --out piped --quiet").status, 0);
  EXPECT_EQ(read("piped/smoothed.csv"), read("direct/smoothed.csv"));
  const auto before = contents();
  expectRefusal(run("smooth - --out out </dev/null"), "-: empty", before);
  expectRefusal(run("smooth - --out out <."), "-: cannot be read", before);
  expectRefusal(run("smooth - --out out <&-"), "-: cannot be read", before);
  expectRefusal(shell("cat log.csv | \"" MIREL_TOOL "\" smooth /dev/stdin --out out"),
                "/dev/stdin: no file with content", before);
}

}  // namespace
