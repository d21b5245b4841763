/// Plots over time as charts of the report.
#pragma once

#include "output/Report.h"
#include "pictures/TimePlot.h"

namespace mirel {

/// Puts one chart per panel into the report, with at most 2000 points per curve; the picture instead where the tool was
/// built without the library for charts.
void addTimePlot(Report& report, const TimePlot& plot, const cv::Mat& picture);

}  // namespace mirel
