/// The last frame with the ways that its features came.
#pragma once

#include "input/FrameSource.h"
#include "tracking/Tracks.h"

#include <opencv2/core/mat.hpp>

namespace mirel {

/// Tails of at most 40 frames of the tracks that reach the last frame, coloured by the number of frames of the track.
cv::Mat drawTracks(const Frame& lastFrame, int lastNumber, const Tracks& tracks);

}  // namespace mirel
