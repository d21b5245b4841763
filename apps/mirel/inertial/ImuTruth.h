/// An estimate beside a known truth.
#pragma once

#include "inertial/ImuEstimate.h"
#include "inertial/ImuRecording.h"

#include <cstddef>
#include <vector>

namespace mirel {

struct ErrorSpread {
  double rms = 0, max = 0;
};

/// Root of the mean square, and the largest; what is no number is left out. Zero for nothing.
ErrorSpread spreadOf(const std::vector<double>& values);

struct TruthComparison {
  std::vector<cv::Vec4d> attitude;  ///< the truth at each sample, turned to the estimate's heading; NaN outside of it
  std::vector<double> angle;        ///< between the attitudes, rad
  std::vector<double> gravity;      ///< between the directions of gravity, rad
  std::size_t compared = 0;         ///< samples within the time of the truth
};

/// Compares sample by sample, the truth being interpolated. An inertial sensor does not know where north is: the
/// heading of the truth is turned about the vertical so that it fits at the first sample compared.
TruthComparison compare(const ImuRecording& recording, const ImuEstimate& estimate, const AttitudeRecording& truth);

}  // namespace mirel
