/// What a run was: everything that is needed to understand and to repeat it.
#pragma once

#include "input/FrameSource.h"
#include "options/SettingsOption.h"

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace mirel {

/// Seconds spent in each stage of a run, in order of first use.
class StageClock {
 public:
  /// Runs `work` and adds its time to the stage.
  template <class Work>
  auto time(const char* stage, Work&& work) {
    const Stop stop{*this, stage, std::chrono::steady_clock::now()};
    return work();
  }

  const std::vector<std::pair<std::string, double>>& stages() const { return stages_; }

  /// Seconds of one stage, 0 when it never ran.
  double seconds(const std::string& stage) const;

 private:
  struct Stop {
    StageClock& clock;
    const char* stage;
    std::chrono::steady_clock::time_point start;
    ~Stop() { clock.add(stage, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count()); }
  };

  void add(const std::string& stage, double seconds);

  std::vector<std::pair<std::string, double>> stages_;
};

struct RunRecord {
  std::string command;
  nlohmann::json options;   ///< as `recordedOptions` gives them
  nlohmann::json settings;  ///< in force, as `Settings::inForce` gives them
  std::vector<InputFile> inputs;

  /// The content of `run.json`.
  nlohmann::json json(const StageClock& clock) const;
};

/// One warning line on standard error for each input whose content differs from the recorded one.
void warnAboutChangedInputs(const nlohmann::json& record, const std::vector<InputFile>& inputs);

}  // namespace mirel
