/// Repeating a recorded run: the options of a subcommand to and from `run.json`.
#pragma once

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <string>

namespace mirel {

/// What was given to a subcommand, option by option; leaves out where and how results are shown.
nlohmann::json recordedOptions(const CLI::App& app);

/// The content of a `run.json`; throws `UsageError` when the file is not one.
nlohmann::json readRunRecord(const std::string& file);

/// Gives the subcommand every recorded option that its command line did not have.
void replayOptions(CLI::App& app, const nlohmann::json& record, const std::string& file);

}  // namespace mirel
