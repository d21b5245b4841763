#include "Session.h"

#include "Errors.h"
#include "options/Replay.h"
#include "output/Interrupt.h"
#include "output/JsonText.h"
#include "output/Summary.h"

#include <fmt/format.h>

#include <cstdio>

namespace mirel {

namespace {

nlohmann::json replay(CLI::App& app, const RunOptions& options) {
  if (options.config.empty()) return nullptr;
  nlohmann::json record = readRunRecord(options.config);
  replayOptions(app, record, options.config);
  return record;
}

std::function<void(const Report&)>& reportListener() {
  static std::function<void(const Report&)> listener;
  return listener;
}

}  // namespace

void listenToReports(std::function<void(const Report&)> listener) { reportListener() = std::move(listener); }

Session::Session(CLI::App& app, const RunOptions& options, const std::string& operations)
    : app_(app),
      options_(options),
      replayed_(replay(app, options)),
      threads_(options.apply()),
      settings_(options.settings),
      inForce_(settings_.inForce(operations)) {
  for (const std::string& key : settings_.unread(operations)) {
    fmt::print(stderr, "mirel {}: warning: --set {}: not read by this subcommand\n", app.get_name(), key);
  }
}

OutputFolder& Session::folder() {
  if (!folder_) {
    folder_.emplace(options_.out);
    // Dumps of intermediate images go where all results go, unless the user wants them elsewhere.
    if (!settings_.isSet("FBMWorkDir")) {
      try {
        settings_.set("FBMWorkDir", std::filesystem::path(folder_->stagingFolder()).wstring());
      } catch (const std::filesystem::filesystem_error&) {
        throw UsageError("--out " + options_.out + ": a name in UTF-8 expected");
      }
    }
  }
  return *folder_;
}

void Session::finish(Report& report, const std::vector<InputFile>& inputs, const std::string& summary,
                     const std::string& numberedPrefix) {
  const RunRecord record{app_.get_name(), recordedOptions(app_), inForce_, inputs};
  if (!replayed_.is_null()) warnAboutChangedInputs(replayed_, inputs);
  report.run = record.json(clock_);
  checkInterrupt();
  folder().write("run.json", jsonText(report.run));
  folder().write("report.html", report.html());
  for (const InputFile& input : inputs) folder().checkSpares(input.path);
  for (const auto& file : files_) folder().checkSpares(file->target());
  folder().checkPlaces();
  for (const auto& file : files_) file->commit();
  folder().commit(numberedPrefix);
  if (reportListener()) reportListener()(report);
  if (options_.json) {
    fmt::print("{}", jsonText(report.result));
  } else if (!options_.quiet) {
    fmt::print("{}{}", summary, summaryLine("report", folder().shownPath("report.html")));
  }
}

}  // namespace mirel
