/// Image motion between two frames as a homography.
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/Host.h>

namespace MirelAlgorithms {

struct MotionEstimate;

}  // namespace MirelAlgorithms
