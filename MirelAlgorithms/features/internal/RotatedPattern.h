/// The ORB pattern turned, stretched and placed on an image.
#pragma once

#include <MirelAlgorithms/features/internal/OrbPattern.h>

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>

namespace MirelAlgorithms {

/// One byte for each point of the pattern: the first points of all pairs, then the second ones.
struct OrbSamples {
  alignas(32) std::uint8_t first[orbPattern.size()];
  alignas(32) std::uint8_t second[orbPattern.size()];
};

/// The pixels under the pattern of a key point, see `MirelScalingORB::getDescriptors`.
///
/// @param image     8-bit grey, not empty
/// @param keyPoint  position, size and angle are finite
///
/// Vector code of the widest instruction set, the same bits on each.
void sampleRotatedPattern(const cv::Mat& image, const cv::KeyPoint& keyPoint, OrbSamples& samples);

}  // namespace MirelAlgorithms
