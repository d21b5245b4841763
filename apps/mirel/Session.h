/// What all runs have in common that work on data and write files.
#pragma once

#include "options/RunOptions.h"
#include "options/SettingsOption.h"
#include "output/OutputFolder.h"
#include "output/Report.h"
#include "output/RunRecord.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <optional>

namespace mirel {

/// From the options to the folder of results. Made at the start of a run: the recorded run of `--config` is filled in,
/// the log and the threads are set, the settings checked.
class Session {
 public:
  /// @param operations  start of the names of the library's operations that the subcommand calls; by default none that
  ///                    has settings
  Session(CLI::App& app, const RunOptions& options, const std::string& operations = "none");

  Settings& settings() { return settings_; }
  StageClock& clock() { return clock_; }

  /// The folder of results; opened by the first call, which comes when the input has been looked at.
  OutputFolder& folder();

  /// A file of the user's choice outside the folder, moved to its place together with the rest.
  const StagedFile& stageFile(const std::string& target) { return *files_.emplace_back(new StagedFile(target)); }

  /// Writes `run.json` and the report, moves everything to its place, and shows the result: as JSON, or as summary.
  /// @param report          complete but for the run record, which is filled in
  /// @param numberedPrefix  see `OutputFolder::commit`
  void finish(Report& report, const std::vector<InputFile>& inputs, const std::string& summary,
              const std::string& numberedPrefix = {});

 private:
  CLI::App& app_;
  const RunOptions& options_;
  nlohmann::json replayed_;  ///< null without `--config`
  std::unique_ptr<oneapi::tbb::global_control> threads_;
  Settings settings_;
  nlohmann::json inForce_;
  StageClock clock_;
  std::optional<OutputFolder> folder_;
  std::vector<std::unique_ptr<StagedFile>> files_;
};

/// The listener gets the report of every run that ends well, until another one is set; an empty one is none.
void listenToReports(std::function<void(const Report&)> listener);

}  // namespace mirel
