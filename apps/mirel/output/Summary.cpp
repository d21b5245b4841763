#include "output/Summary.h"

#include <fmt/format.h>

namespace mirel {

std::string summaryLine(const std::string& label, const std::string& text) {
  return fmt::format("{:<14}{}\n", label, text);
}

std::string describeStages(const StageClock& clock) {
  std::string text;
  for (const auto& [stage, seconds] : clock.stages()) {
    text += fmt::format("{}{} {:.1f} ms", text.empty() ? "" : ", ", stage, 1000 * seconds);
  }
  return text;
}

}  // namespace mirel
