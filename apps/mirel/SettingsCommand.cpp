/// `mirel settings`: every key of the library.
#include "Command.h"
#include "Errors.h"
#include "Session.h"
#include "options/NearestName.h"
#include "options/SettingsOption.h"
#include "output/JsonText.h"
#include "output/Summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <set>

namespace mirel {

namespace {

using MirelAlgorithms::SettingInfo;

std::vector<std::string> operationsOf(const std::vector<SettingInfo>& catalogue) {
  std::vector<std::string> names;
  for (const SettingInfo& info : catalogue) {
    if (std::find(names.begin(), names.end(), info.readBy) == names.end()) names.push_back(info.readBy);
  }
  return names;
}

/// Those read by operations whose name begins with `operation`.
std::vector<SettingInfo> settingsReadBy(const std::string& operation) {
  const std::vector<SettingInfo> catalogue = MirelAlgorithms::settingsCatalogue();
  std::vector<SettingInfo> chosen;
  std::copy_if(catalogue.begin(), catalogue.end(), std::back_inserter(chosen),
               [&](const SettingInfo& info) { return info.readBy.starts_with(operation); });
  if (chosen.empty()) {
    const std::string hint = didYouMean(operation, operationsOf(catalogue));
    throw UsageError("--read-by: no operation '" + operation + "'" + (hint.empty() ? "; see: mirel settings" : hint));
  }
  return chosen;
}

nlohmann::json settingsJson(const std::vector<SettingInfo>& settings) {
  nlohmann::json list = nlohmann::json::array();
  for (const SettingInfo& info : settings) {
    list.push_back({{"key", narrow(info.key)},
                    {"type", typeName(info.fallback)},
                    {"default", valueJson(info.fallback)},
                    {"meaning", info.meaning},
                    {"read_by", info.readBy}});
  }
  return {{"schema", 1}, {"command", "settings"}, {"settings", list}};
}

void printTable(const std::vector<SettingInfo>& settings) {
  std::size_t keyWidth = 3, valueWidth = 7;
  for (const SettingInfo& info : settings) {
    keyWidth = std::max(keyWidth, info.key.size());
    valueWidth = std::max(valueWidth, valueText(info.fallback).size());
  }
  std::string operation;
  for (const SettingInfo& info : settings) {
    if (info.readBy != operation) {
      fmt::print("{}read by {}\n", operation.empty() ? "" : "\n", info.readBy);
      fmt::print("  {:<{}}  {:<6}  {:<{}}  {}\n", "key", keyWidth, "type", "default", valueWidth, "meaning");
      operation = info.readBy;
    }
    fmt::print("  {:<{}}  {:<6}  {:<{}}  {}\n", narrow(info.key), keyWidth, typeName(info.fallback),
               valueText(info.fallback), valueWidth, info.meaning);
  }
}

Report settingsReport(const std::vector<SettingInfo>& settings) {
  const std::vector<std::string> operations = operationsOf(settings);
  std::set<std::string> keys;
  for (const SettingInfo& info : settings) keys.insert(narrow(info.key));
  Report report = {.command = "mirel settings",
                   .answer = {fmt::format("{} settings", keys.size()), Verdict::good,
                              "All have defaults; --set KEY=VALUE of the other subcommands changes them."},
                   .facts = {{"Keys", fmt::format("{}", keys.size()), "some are read by more than one operation"},
                             {"Operations that read them", fmt::format("{}", operations.size()), ""}},
                   .pictures = {},
                   .charts = {},
                   .tables = {},
                   .result = settingsJson(settings),
                   .run = {}};
  for (const std::string& operation : operations) {
    ReportTable table = {"Read by " + operation, {"Key", "Type", "Default", "Meaning"}, {}};
    for (const SettingInfo& info : settings) {
      if (info.readBy != operation) continue;
      table.rows.push_back({narrow(info.key), typeName(info.fallback), valueText(info.fallback), info.meaning});
    }
    report.tables.push_back(std::move(table));
  }
  return report;
}

class SettingsCommand : public Command {
 public:
  void addOptions(CLI::App& app) override {
    app.add_option("--read-by", readBy_, "only the keys of operations whose name begins so")->type_name("OPERATION");
    common_.out.clear();
    common_.addOutput(app);
    app.get_option("--out")->description("folder for a page of them and settings.json; by default they are printed");
  }

  int run(CLI::App& app) override {
    Session session(app, common_);
    const std::vector<SettingInfo> settings = settingsReadBy(readBy_);
    if (!common_.out.empty()) {
      Report report = settingsReport(settings);
      session.folder().write("settings.json", jsonText(report.result));
      session.finish(report, {}, summaryLine("settings", session.folder().shownPath("settings.json")));
    } else if (common_.json) {
      fmt::print("{}", jsonText(settingsJson(settings)));
    } else {
      printTable(settings);
    }
    return success;
  }

 private:
  RunOptions common_;
  std::string readBy_;
};

const CommandRegistration<SettingsCommand> registration("settings", "list every setting of the library",
                                                        {"mirel settings",
                                                         "mirel settings --read-by retrieveFeatures --json"});

}  // namespace

}  // namespace mirel
