/// Every subcommand once.
#pragma once

#include "output/Report.h"

#include <optional>
#include <string>
#include <vector>

namespace mirel {

struct DemoRun {
  std::string command;
  std::vector<std::string> arguments;  ///< without --out
  std::vector<std::string> data;       ///< files in the folder "data" that it reads
};

/// @param folder  where "data" is, and a folder for each run's results
std::vector<DemoRun> demoRuns(const std::string& folder);

struct DemoOutcome {
  DemoRun run;
  std::string commandLine;  ///< for a shell
  int status = 0;
  double seconds = 0;
  std::optional<Report> report;  ///< if it has come to that
};

/// Runs a subcommand in this process; its results go to its own folder in `folder`.
DemoOutcome execute(const DemoRun& run, const std::string& folder);

}  // namespace mirel
