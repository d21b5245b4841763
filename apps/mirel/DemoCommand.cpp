/// `mirel demo`: every subcommand on data made for it.
#include "Command.h"
#include "Errors.h"
#include "Session.h"
#include "demo/DemoData.h"
#include "demo/DemoReport.h"
#include "demo/DemoRuns.h"
#include "output/Summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace mirel {

namespace {

void writeData(const std::string& folder) {
  OutputFolder data(folder);
  writePaintedWall(data);
  writeBumpyFigure(data);
  writeRoom(data);
  writeInertialRecording(data);
  writeNoisySeries(data);
  writeScan(data);
  data.commit();
}

class DemoCommand : public Command {
 public:
  void addOptions(CLI::App& app) override {
    common_.out = "mirel-demo";
    common_.addOutput(app);
  }

  int run(CLI::App& app) override {
    Session session(app, common_);
    session.folder();
    const std::string data = (std::filesystem::path(common_.out) / "data").string();
    session.clock().time("data", [&] { writeData(data); });
    std::vector<DemoOutcome> outcomes;
    int worst = success;
    for (const DemoRun& run : demoRuns(common_.out)) {
      outcomes.push_back(session.clock().time("runs", [&] { return execute(run, common_.out); }));
      if (outcomes.back().status >= interrupted) return outcomes.back().status;  // the subcommand has said so
      worst = std::max(worst, outcomes.back().status);
      show(outcomes.back());
    }
    Report report = demoReport(outcomes);
    session.finish(report, {}, summaryLine("data", data));
    return worst;
  }

 private:
  void show(const DemoOutcome& outcome) const {
    if (common_.quiet || common_.json) return;
    const std::string answer = outcome.report ? outcome.report->answer.title : "no result";
    fmt::print("{}", summaryLine(outcome.run.command, fmt::format("{} ({:.2f} s)", answer, outcome.seconds)));
    std::fflush(stdout);
  }

  RunOptions common_;
};

const CommandRegistration<DemoCommand> registration(
    "demo", "run every subcommand on data made for it and show them on one page",
    {"mirel demo --out out/demo", "mirel demo --json"});

}  // namespace

}  // namespace mirel
