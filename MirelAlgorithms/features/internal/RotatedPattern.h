/// The ORB pattern turned, stretched, placed on an image and compared.
#pragma once

#include <MirelAlgorithms/features/internal/OrbPattern.h>

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>

namespace MirelAlgorithms {

/// Bytes of an ORB descriptor.
inline constexpr int orbDescriptorBytes = orbPattern.size() / 8;

/// Descriptor of a key point, see `MirelScalingORB::getDescriptors`.
///
/// @param image       8-bit grey, not empty
/// @param keyPoint    position, size and angle are finite
/// @param descriptor  receives `orbDescriptorBytes` bytes
///
/// Vector code of the widest instruction set, the same bits on each.
void describeRotated(const cv::Mat& image, const cv::KeyPoint& keyPoint, std::uint8_t* descriptor);

}  // namespace MirelAlgorithms
