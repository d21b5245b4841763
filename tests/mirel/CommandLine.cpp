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
  write("small.png", texture(0, 0, 1, {200, 100}));
  expectRefused("", {{"help trak", "did you mean track?"},
                     {"trak --help", "did you mean track?"},
                     {"--versoin", "did you mean --version?"},
                     {"--out results track a.png b.png", "--out stands before the subcommand"},
                     {"settings --read-by retrieveFeature2", "did you mean retrieveFeatures?"}});
  expectRefused("track", {{"", "no frames given"},
                          {"a.png", "one frame given, two or more expected"},
                          {"a.png b.png --mod wide", "did you mean --mode?"},
                          {"a.png b.png --mode wid", "did you mean wide?"},
                          {"a.png b.png --max-frames 2.5", "'2.5' given"},
                          {"a.png b.png --threads 0", "from 1 on"},
                          {"a.png small.png", "small.png: 200 x 100 pixels, but a.png has 320 x 240"},
                          {"nothing*.png", "nothing*.png: no file"},
                          {"nothing%02d.png", "nothing%02d.png: no file"}});
  expectRefused("features", {{"", "no image given"},
                             {"a.png b.png", "unexpected argument 'b.png'"},
                             {"a.png --descriptors d.bin", ".yml, .xml or .json expected"},
                             {"a.png --config missing.json", "cannot be read"}});
  expectRefused("features a.png --set",
                {{"FBMnFeaturs=3", "unknown key 'FBMnFeaturs'; did you mean FBMnFeatures?"},
                 {"FBMnFeatures", "KEY=VALUE expected"},
                 {"FBMnFeatures=many", "'many' given, a whole number"},
                 {"FBMnFeatures=99999999999", "a whole number"},
                 {"FBMnFeatures=0x", "'0x' given"},
                 {"UseBilateralFilter=1", "true or false expected"},
                 {"FBMnCells=0", "a.png: "},
                 {"FBMFpgaQuantized=true --set FBMSobelSize=7", "Unsupported Sobel size 7. Supported: 3, 5"}});
}

TEST_F(CommandLine, theLogComesAsLevelFunctionMessage) {
  write("a.png", texture(0, 0));
  EXPECT_EQ(run("features a.png --set FBMFpgaQuantized=true").errors, "");
  const std::string log = run("features a.png --set FBMFpgaQuantized=true --log 1000").errors;
  EXPECT_NE(log.find("1000 cornerMinEigenValFpga: EIGEN in/out (bit): 12/12\n"), std::string::npos) << log;
}

}  // namespace
