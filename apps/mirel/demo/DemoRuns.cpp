#include "demo/DemoRuns.h"

#include "CommandLine.h"
#include "Session.h"

#include <chrono>
#include <filesystem>

namespace mirel {

namespace {

/// In quotes where a shell would not take it as one word.
std::string shellWord(const std::string& word) {
  const char* plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=.,:/@%";
  if (!word.empty() && word.find_first_not_of(plain) == std::string::npos) return word;
  std::string quoted = "'";
  for (const char c : word) quoted += c == '\'' ? "'\\''" : std::string(1, c);
  return quoted + "'";
}

}  // namespace

std::vector<DemoRun> demoRuns(const std::string& folder) {
  const std::filesystem::path root = folder;
  const auto data = [&](const char* name) { return (root / "data" / name).string(); };
  const auto result = [&](const char* name) { return (root / name).string(); };
  return {
      {"track",
       {data("view_*.png")},
       {"view_1.png", "view_2.png", "view_3.png", "view_4.png", "view_5.png", "view_6.png"}},
      {"features", {data("view_1.png"), "--set", "FBMnFeatures=500"}, {"view_1.png"}},
      {"texture",
       {data("photo_1.png"), data("photo_2.png"), data("photo_3.png")},
       {"photo_1.png", "photo_2.png", "photo_3.png"}},
      {"mesh", {data("figure.obj"), result("mesh/light.obj"), "--triangles", "4000", "--picture"}, {"figure.obj"}},
      {"depth", {data("depth.png"), result("depth/smoothed.png")}, {"depth.png"}},
      {"points", {data("points.csv"), result("points/kept.csv"), "--set", "smoothSparseMode=0x2000"}, {"points.csv"}},
      {"imu", {data("recording.csv"), "--truth", data("truth.csv")}, {"recording.csv", "truth.csv"}},
      {"smooth", {data("series.csv"), "--window", "15"}, {"series.csv"}},
      {"frustum", {data("views.json"), "--look", "-z", "--fov", "40", "--far", "1.8"}, {"views.json"}},
      {"visibility", {data("scan.csv"), data("poses.json"), "--voxel", "0.1"}, {"scan.csv", "poses.json"}},
      {"settings", {}, {}},
  };
}

DemoOutcome execute(const DemoRun& run, const std::string& folder) {
  DemoOutcome outcome{run, "mirel", 0, 0, {}};
  std::vector<std::string> arguments = {run.command};
  arguments.insert(arguments.end(), run.arguments.begin(), run.arguments.end());
  arguments.insert(arguments.end(), {"--out", (std::filesystem::path(folder) / run.command).string()});
  for (const std::string& argument : arguments) outcome.commandLine += " " + shellWord(argument);
  arguments.push_back("--quiet");

  listenToReports([&](const Report& report) { outcome.report = report; });
  const auto start = std::chrono::steady_clock::now();
  outcome.status = runCommandLine(std::move(arguments));
  outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  listenToReports({});
  return outcome;
}

}  // namespace mirel
