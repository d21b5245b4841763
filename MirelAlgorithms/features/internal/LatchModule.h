/// What OpenCV's LATCH keeps to itself, where its source is compiled with this library (see cmake/Xfeatures2d.cmake).
#pragma once

#include <opencv2/xfeatures2d.hpp>
#include <vector>

namespace MirelAlgorithms::LatchModule {

/// The learned triplets of patch centres, in the order of the bits: x, y of A, of B and of C, within +-24 pixels.
const std::vector<int>& samplingPoints(const cv::xfeatures2d::LATCH& latch);

/// Cosine and sine of a key point's angle, degrees, with the module's own conversions and functions.
struct Rotation {
  float cosine, sine;
};
Rotation rotation(float angle);

}  // namespace MirelAlgorithms::LatchModule
