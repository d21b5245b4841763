#include <csignal>

#include "ToolTest.h"

namespace {

/// Signals in the middle of a run.
class Interruption : public ToolTest {
 protected:
  Interruption() {
    std::signal(SIGHUP, SIG_DFL);  // the tool keeps ignoring what its caller ignores, as nohup does
    write("a.png", texture(0, 0, 1, {640, 480}));
    write("b.png", texture(5, -3, 1, {640, 480}));
    write("in.obj", gridMesh(199, 1));
    writePrecious({"made.obj", "out/run.json", "out/features.csv"});
  }
};

TEST_F(Interruption, everySignalEndsARunThatLeavesNothing) {
  std::string frames;
  for (int i = 0; i < 300; ++i) frames += " a.png b.png";
  const std::string track = "track" + frames, mesh = "mesh in.obj made.obj --ratio 0.05 --picture";
  const struct {
    std::string arguments, signal;
    int status;
  } cases[] = {{track, "INT", 130}, {track, "TERM", 143}, {track, "HUP", 129}, {mesh, "INT", 130}, {mesh, "TERM", 143}};
  for (const auto& [arguments, signal, status] : cases) {
    SCOPED_TRACE(arguments.substr(0, 5) + signal);
    const auto before = contents();
    const ToolResult result = shell("\"" MIREL_TOOL "\" " + arguments +
                                    " --out out & run=$!; for i in $(seq 3000); do "
                                    "[ -e out/.mirel-unfinished-$run-0 ] && break; sleep 0.01; done; kill -" +
                                    signal + " $run; wait $run");
    EXPECT_EQ(result.status, status);
    EXPECT_EQ(result.errors, "mirel " + arguments.substr(0, arguments.find(' ')) + ": interrupted, nothing written\n");
    EXPECT_TRUE(contents() == before);
  }
}

TEST_F(Interruption, waitingForInputEndsToo) {
  const auto before = contents();
  // The pipe holds less than that: when all has gone through, the tool reads and waits for more.
  const ToolResult result = shell("mkfifo ../pipe && { \"" MIREL_TOOL
                                  "\" smooth - --out out <../pipe & run=$!; exec 3>../pipe; "
                                  "head -c 3000000 /dev/zero >&3; kill -TERM $run; wait $run; }");
  EXPECT_EQ(result.status, 143);
  EXPECT_EQ(result.errors, "mirel smooth: interrupted, nothing written\n");
  EXPECT_TRUE(contents() == before);
}

TEST_F(Interruption, whatAKilledRunLeftIsNotTakenForResults) {
  write("log.csv", "a\n1\n2\n3\n4\n5\n6\n7\n8\n9\n");
  // Numbers of processes come again; exec keeps that of the shell.
  const ToolResult smooth = shell(
      "mkdir out/.mirel-unfinished-$$-0 && echo half >out/.mirel-unfinished-$$-0/half.csv && exec "
      "\"" MIREL_TOOL "\" smooth log.csv --out out --quiet");
  EXPECT_EQ(smooth.status, 0) << smooth.errors;
  EXPECT_FALSE(exists("out/half.csv"));
  EXPECT_TRUE(exists("out/smoothed.csv"));
}

}  // namespace
