#include "demo/DemoReport.h"

#include "Command.h"

#include <fmt/format.h>

#include <algorithm>

namespace mirel {

namespace {

std::string meaningOf(const std::string& command) {
  for (const CommandEntry& entry : commands()) {
    if (entry.name == command) return entry.summary;
  }
  return {};
}

ReportAnswer answerOf(const DemoOutcome& outcome) {
  if (outcome.report) return outcome.report->answer;
  return {"No result", Verdict::bad,
          fmt::format("No result: exit status {}; standard error says why.", outcome.status)};
}

/// The first curve over time, else the first picture.
void addMainPicture(ReportPart& part, const Report& report) {
  if (!report.charts.empty() && report.charts[0].overTime) {
    part.charts = {report.charts[0]};
  } else if (!report.pictures.empty()) {
    part.pictures = {report.pictures[0]};
  }
}

ReportPart partOf(const DemoOutcome& outcome) {
  const std::string& command = outcome.run.command;
  ReportPart part = {command, meaningOf(command), outcome.commandLine, answerOf(outcome), {}, {}, {}, {}};
  if (outcome.report) {
    constexpr std::size_t mostFacts = 4;
    const std::vector<ReportFact>& facts = outcome.report->facts;
    part.facts.assign(facts.begin(), facts.begin() + static_cast<std::ptrdiff_t>(std::min(facts.size(), mostFacts)));
    addMainPicture(part, *outcome.report);
    part.links.push_back({"Its own report", command + "/report.html"});
  }
  for (const std::string& name : outcome.run.data) part.links.push_back({name, "data/" + name});
  return part;
}

nlohmann::json resultJson(const std::vector<DemoOutcome>& outcomes) {
  nlohmann::json runs = nlohmann::json::array();
  for (const DemoOutcome& outcome : outcomes) {
    runs.push_back({{"command", outcome.run.command},
                    {"command_line", outcome.commandLine},
                    {"status", outcome.status},
                    {"seconds", outcome.seconds},
                    {"answer", answerOf(outcome).title}});
  }
  return {{"schema", 1}, {"command", "demo"}, {"runs", runs}};
}

}  // namespace

Report demoReport(const std::vector<DemoOutcome>& outcomes) {
  const auto good = std::count_if(outcomes.begin(), outcomes.end(), [](const auto& o) { return o.status == 0; });
  const bool all = good == static_cast<std::ptrdiff_t>(outcomes.size());
  double seconds = 0;
  for (const DemoOutcome& outcome : outcomes) seconds += outcome.seconds;
  Report report = {
      .command = "mirel demo",
      .answer = {fmt::format("{} of {} subcommands have a result", good, outcomes.size()),
                 all ? Verdict::good : Verdict::bad,
                 all ? "Good: each on data made by calculation, which lies beside this page. The command lines below "
                       "repeat the runs."
                     : "No result from some of them; standard error says why."},
      .facts = {{"Subcommands", fmt::format("{}", outcomes.size()), "a section each"},
                {"Time", fmt::format("{:.1f} s", seconds), "one after the other, pictures and reports included"}},
      .pictures = {},
      .charts = {},
      .tables = {},
      .parts = {},
      .result = resultJson(outcomes),
      .run = {}};
  for (const DemoOutcome& outcome : outcomes) report.parts.push_back(partOf(outcome));
  return report;
}

}  // namespace mirel
