/// The report page of a tracked sequence.
#pragma once

#include "output/Report.h"
#include "tracking/TrackResult.h"

namespace mirel {

/// Answer, verdict, charts and tables; pictures are the caller's.
Report trackReport(const TrackResult& result, const StageClock& clock);

}  // namespace mirel
