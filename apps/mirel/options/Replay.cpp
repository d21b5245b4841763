#include "options/Replay.h"

#include "Errors.h"
#include "input/JsonDepth.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <fstream>

namespace mirel {

namespace {

constexpr std::array notRecorded = {"out", "config", "log", "json", "quiet", "help"};

std::string optionName(const CLI::Option& option) {
  return option.get_lnames().empty() ? option.get_name() : option.get_lnames().front();
}

bool isRecorded(const std::string& name) {
  return std::find(notRecorded.begin(), notRecorded.end(), name) == notRecorded.end();
}

bool isInput(const nlohmann::json& input) {
  return input.is_object() && input.value("path", nlohmann::json()).is_string() &&
         input.value("sha256", nlohmann::json()).is_string();
}

bool isRunRecord(const nlohmann::json& record) {
  if (!record.is_object() || record.value("schema", nlohmann::json()) != 1) return false;
  const nlohmann::json inputs = record.value("inputs", nlohmann::json::array());
  return record.value("command", nlohmann::json()).is_string() &&
         record.value("options", nlohmann::json()).is_object() && inputs.is_array() &&
         std::all_of(inputs.begin(), inputs.end(), isInput);
}

}  // namespace

nlohmann::json recordedOptions(const CLI::App& app) {
  nlohmann::json options = nlohmann::json::object();
  for (const CLI::Option* option : app.get_options()) {
    const std::string name = optionName(*option);
    if (option->count() > 0 && isRecorded(name)) options[name] = option->results();
  }
  return options;
}

nlohmann::json readRunRecord(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw UsageError("--config " + file + ": cannot be read, the run.json of an earlier run expected");
  const std::string refusal = "--config " + file + ": not a run record, the run.json of an earlier run expected";
  nlohmann::json record = nlohmann::json::parse(stream, refuseDeepNesting(refusal), false);
  if (!isRunRecord(record)) throw UsageError(refusal);
  return record;
}

void replayOptions(CLI::App& app, const nlohmann::json& record, const std::string& file) {
  if (record["command"] != app.get_name()) {
    throw UsageError(fmt::format("--config {}: records a run of '{}', not of '{}'", file,
                                 record["command"].get<std::string>(), app.get_name()));
  }
  const nlohmann::json& options = record["options"];
  for (CLI::Option* option : app.get_options()) {
    const std::string name = optionName(*option);
    if (option->count() > 0 || !isRecorded(name) || !options.contains(name)) continue;
    try {
      option->add_result(options[name].get<std::vector<std::string>>());
      option->run_callback();
    } catch (const nlohmann::json::exception&) {
      throw UsageError(fmt::format("--config {}: option '{}' should be a list of texts", file, name));
    } catch (const CLI::Error& error) {
      throw UsageError(fmt::format("--config {}: {}", file, error.what()));
    }
  }
}

}  // namespace mirel
