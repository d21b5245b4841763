#include "ToolTest.h"

#include <MirelAlgorithms/BuildInfo.h>

namespace {

using CommandLine = ToolTest;

const char* const subcommands[] = {"demo",   "depth",    "features", "frustum", "imu",   "mesh",
                                   "points", "settings", "smooth",   "texture", "track", "visibility"};

TEST_F(CommandLine, helpIsAskedForInManyWays) {
  for (const char* arguments : {"", "--help", "help", "help help"}) {
    const ToolResult result = run(arguments);
    EXPECT_EQ(result.status, 0) << arguments;
    for (const char* command : subcommands) {
      EXPECT_NE(result.output.find(command), std::string::npos) << arguments << command;
    }
  }
  for (const std::string command : subcommands) {
    const ToolResult result = run(command + " --help");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, run("help " + command).output);
    const std::size_t examples = result.output.find("Examples:\n  mirel " + command);
    ASSERT_NE(examples, std::string::npos) << command;
    EXPECT_EQ(std::count(result.output.begin() + examples, result.output.end(), '\n'), 4)
        << "two examples and a blank line";
  }
}

TEST_F(CommandLine, versionTellsTheBuild) {
  const MirelAlgorithms::BuildInfo build = MirelAlgorithms::buildInfo();
  const std::string expected = std::string("mirel ") + build.version + "\nOpenCV " + build.openCV + "\nxfeatures2d " +
                               (build.xfeatures2d ? "yes" : "no") + "\ninstruction set " + build.instructions + "\n";
  EXPECT_EQ(run("--version").output, expected);
}

TEST_F(CommandLine, wrongUsageIsOneLineAndLeavesNothing) {
  write("a.png", texture(0, 0));
  write("b.png", texture(3, 2));
  write("small.png", texture(0, 0, 1, {200, 100}));
  write("text.png", "no picture");
  write("empty.png", "");
  const struct {
    const char *arguments, *said;
  } cases[] = {
      {"trak a.png b.png", "did you mean track?"},
      {"help trak", "did you mean track?"},
      {"trak --help", "did you mean track?"},
      {"--versoin", "did you mean --version?"},
      {"--out results track a.png b.png", "--out stands before the subcommand"},
      {"track a.png b.png --mod wide", "did you mean --mode?"},
      {"track a.png b.png --mode wid", "did you mean wide?"},
      {"track a.png b.png --every 0", "from 1 on"},
      {"track a.png b.png --max-frames 2.5", "'2.5' given"},
      {"track a.png b.png --threads 0", "from 1 on"},
      {"track", "no frames given"},
      {"track a.png", "one frame given, two or more expected"},
      {"track a.png missing.png", "missing.png: no such file"},
      {"track a.png text.png", "text.png: not an image"},
      {"track a.png empty.png", "empty.png: empty"},
      {"track a.png small.png", "small.png: 200 x 100 pixels, but a.png has 320 x 240"},
      {"track text.png", "text.png"},
      {"track .", "a folder"},
      {"track 'nothing*.png'", "nothing*.png: no file"},
      {"track nothing%02d.png", "nothing%02d.png: no file"},
      {"features", "no image given"},
      {"features a.png b.png", "unexpected argument 'b.png'"},
      {"features a.png --set FBMnFeaturs=3", "unknown key 'FBMnFeaturs'; did you mean FBMnFeatures?"},
      {"features a.png --set FBMnFeatures", "KEY=VALUE expected"},
      {"features a.png --set FBMnFeatures=many", "'many' given, a whole number"},
      {"features a.png --set FBMnFeatures=99999999999", "a whole number"},
      {"features a.png --set UseBilateralFilter=1", "true or false expected"},
      {"features a.png --set FBMnCells=0", "a.png: "},
      {"features a.png --set FBMFpgaQuantized=true --set FBMSobelSize=7", "Unsupported Sobel size 7. Supported: 3, 5"},
      {"features a.png --descriptors d.bin", ".yml, .xml or .json expected"},
      {"features a.png --descriptors missing/d.yml", "missing/d.yml: cannot be written"},
      {"features a.png --config text.png", "not a run record"},
      {"features a.png --config missing.json", "cannot be read"},
      {"settings --read-by retrieveFeature2", "did you mean retrieveFeatures?"},
  };
  for (const auto& [arguments, said] : cases) {
    const ToolResult result = run(arguments);
    EXPECT_EQ(result.status, 2) << arguments;
    EXPECT_EQ(result.errorLines(), 1) << arguments << ": " << result.errors;
    EXPECT_NE(result.errors.find(said), std::string::npos) << arguments << ": " << result.errors;
    EXPECT_EQ(result.output, "") << arguments;
    EXPECT_FALSE(exists("mirel-out")) << arguments;
  }
}

TEST_F(CommandLine, foldersThatCannotBeWrittenAreRefused) {
  write("a.png", texture(0, 0));
  write("file", "in the way");
  for (const char* out : {"file", "file/below/it", "\"\""}) {
    const ToolResult result = run(std::string("features a.png --out ") + out);
    EXPECT_EQ(result.status, 2) << out;
    EXPECT_EQ(result.errorLines(), 1) << result.errors;
    EXPECT_NE(result.errors.find("--out"), std::string::npos) << result.errors;
  }
  EXPECT_EQ(read("file"), "in the way");
}

TEST_F(CommandLine, failureKeepsWhatWasThere) {
  write("a.png", texture(0, 0));
  write("half.png", read("a.png").substr(0, 20000));
  std::filesystem::create_directories(path("out"));
  write("out/features.csv", "of an earlier run");
  EXPECT_EQ(run("track a.png half.png --out out").status, 2);
  EXPECT_EQ(files("out"), std::set<std::string>{"features.csv"});
  EXPECT_EQ(read("out/features.csv"), "of an earlier run");
}

TEST_F(CommandLine, theLogComesAsLevelFunctionMessage) {
  write("a.png", texture(0, 0));
  EXPECT_EQ(run("features a.png --set FBMFpgaQuantized=true").errors, "");
  const std::string log = run("features a.png --set FBMFpgaQuantized=true --log 1000").errors;
  EXPECT_NE(log.find("1000 cornerMinEigenValFpga: EIGEN in/out (bit): 12/12\n"), std::string::npos) << log;
}

}  // namespace
