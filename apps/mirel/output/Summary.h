/// Lines of a summary on the console.
#pragma once

#include "output/RunRecord.h"

#include <string>

namespace mirel {

/// A label and its text, aligned with the other lines.
std::string summaryLine(const std::string& label, const std::string& text);

/// The stages of a run with their milliseconds.
std::string describeStages(const StageClock& clock);

}  // namespace mirel
