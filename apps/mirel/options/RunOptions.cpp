#include "options/RunOptions.h"

#include "options/Checks.h"
#include "options/SettingsOption.h"

#include <MirelCore/Log.h>
#include <fmt/format.h>

#include <cstdio>
#include <opencv2/core/utility.hpp>

namespace mirel {

namespace {

constexpr const char* group = "Common options";

}  // namespace

void RunOptions::addOutput(CLI::App& app) {
  app.add_option("--out", out, "folder for the results, made if missing")
      ->type_name("DIR")
      ->capture_default_str()
      ->group(group);
  app.add_option("--config", config, "repeat a recorded run; options given here come before the recorded ones")
      ->type_name("run.json")
      ->group(group);
  app.add_flag("--json", json, "the result as JSON on standard output, and nothing else there")->group(group);
  app.add_flag("--quiet", quiet, "no summary, no progress bar")->group(group);
}

void RunOptions::add(CLI::App& app) {
  addOutput(app);
  app.add_option("--set", settings, "a setting of the library, repeatable; all keys: mirel settings")
      ->type_name("KEY=VALUE")
      ->allow_extra_args(false)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->group(group);
  app.add_option("--threads", threads, "number of threads; the result does not depend on it")
      ->type_name("N")
      ->check(atLeast(1))
      ->group(group);
  app.add_option("--log", logLevel, "lines of the library's log on standard error: 1 few, 1000 many, 1500 all")
      ->type_name("LEVEL")
      ->check(atLeast(0))
      ->group(group);
}

std::unique_ptr<oneapi::tbb::global_control> RunOptions::apply() const {
  MirelCore::setLogSink([](const MirelCore::LogRecord& record) {
    fmt::print(stderr, "{} {}: {}\n", record.level, record.function, narrow(record.message));
  });
  MirelCore::setLogLevel(logLevel);
  if (threads == 0) return nullptr;
  cv::setNumThreads(threads);
  return std::make_unique<oneapi::tbb::global_control>(oneapi::tbb::global_control::max_allowed_parallelism, threads);
}

}  // namespace mirel
