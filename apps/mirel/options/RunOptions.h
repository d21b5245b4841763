/// Options that all subcommands share which work on data and write files.
#pragma once

#include <oneapi/tbb/global_control.h>
#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

namespace mirel {

struct RunOptions {
  std::string out = "mirel-out";
  std::vector<std::string> settings;
  std::string config;
  int logLevel = 0;
  int threads = 0;  ///< 0: as many as the machine has
  bool json = false;
  bool quiet = false;

  /// Declares them on a subcommand.
  void add(CLI::App& app);

  /// Declares those about the results only, on a subcommand that calls nothing with settings, log lines or threads.
  void addOutput(CLI::App& app);

  /// Starts the library's log on standard error and limits the threads for as long as the result lives.
  std::unique_ptr<oneapi::tbb::global_control> apply() const;
};

}  // namespace mirel
