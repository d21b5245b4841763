#include "output/RunRecord.h"

#include <MirelAlgorithms/BuildInfo.h>
#include <fmt/format.h>

#include <oneapi/tbb/global_control.h>
#include <algorithm>
#include <cstdio>

namespace mirel {

double StageClock::seconds(const std::string& stage) const {
  const auto entry = std::find_if(stages_.begin(), stages_.end(), [&](const auto& s) { return s.first == stage; });
  return entry == stages_.end() ? 0.0 : entry->second;
}

void StageClock::add(const std::string& stage, double seconds) {
  const auto entry = std::find_if(stages_.begin(), stages_.end(), [&](const auto& s) { return s.first == stage; });
  if (entry == stages_.end()) {
    stages_.emplace_back(stage, seconds);
  } else {
    entry->second += seconds;
  }
}

nlohmann::json RunRecord::json(const StageClock& clock) const {
  using oneapi::tbb::global_control;
  const MirelAlgorithms::BuildInfo build = MirelAlgorithms::buildInfo();
  nlohmann::json files = nlohmann::json::array();
  for (const InputFile& file : inputs) {
    files.push_back({{"path", file.path}, {"bytes", file.bytes}, {"sha256", file.sha256}});
  }
  nlohmann::json seconds = nlohmann::json::object();
  for (const auto& [stage, value] : clock.stages()) seconds[stage] = value;
  return {{"schema", 1},
          {"command", command},
          {"options", options},
          {"version", build.version},
          {"opencv", build.openCV},
          {"xfeatures2d", build.xfeatures2d},
          {"instruction_set", build.instructions},
          {"threads", global_control::active_value(global_control::max_allowed_parallelism)},
          {"settings", settings},
          {"inputs", files},
          {"seconds", seconds}};
}

void warnAboutChangedInputs(const nlohmann::json& record, const std::vector<InputFile>& inputs) {
  for (const nlohmann::json& recorded : record.value("inputs", nlohmann::json::array())) {
    for (const InputFile& file : inputs) {
      if (recorded["path"] != file.path || recorded["sha256"] == file.sha256) continue;
      fmt::print(stderr, "mirel: warning: {}: its content has changed since the recorded run\n", file.path);
    }
  }
}

}  // namespace mirel
