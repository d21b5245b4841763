/// One page about the runs of all subcommands.
#pragma once

#include "demo/DemoRuns.h"

namespace mirel {

Report demoReport(const std::vector<DemoOutcome>& outcomes);

}  // namespace mirel
