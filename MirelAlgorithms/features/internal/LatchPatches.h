/// The comparisons of LATCH: sums of squared differences of patches.
#pragma once

#include <MirelAlgorithms/features/internal/LatchModule.h>

#include <cstddef>
#include <cstdint>
#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Bytes behind a row of a patch that may be read, and are ignored.
inline constexpr int latchReadAhead = 16;

/// Writes the descriptors of key points, bit for bit as `cv::xfeatures2d::LATCH` with rotation invariance does: a bit
/// is set where patch A is nearer to B than C is, highest bit of a byte first.
///
/// @param image        8-bit grey, smoothed, continuous
/// @param keyPoints    so far inside that all their patches, and `latchReadAhead`, lie in the memory of the image
/// @param points       for each bit x, y of the centres of patches A, B and C; within +-24 pixels
/// @param halfPatch    patches have sides of 2 * halfPatch + 1 pixels; at most 90
/// @param descriptors  key points x bytes, CV_8UC1
///
/// Vector code of the widest instruction set, the same bits on each.
void describeLatch(const cv::Mat& image, const std::vector<cv::KeyPoint>& keyPoints, const std::vector<int>& points,
                   int halfPatch, cv::Mat& descriptors);

/// Centres of the patches of all bits in turn: A, B, C of the first bit, of the second, ...
struct LatchCentres {
  std::vector<float> x, y;
};

/// What the loops behind `describeLatch` do for one key point.
struct LatchJob {
  const std::uint8_t* pixel;  ///< of the key point
  std::ptrdiff_t step;        ///< between rows
  LatchModule::Rotation rotation;
  const LatchCentres& centres;
  int side;                 ///< of a patch
  std::int32_t* addresses;  ///< scratch, one for each centre
  std::uint8_t* descriptor;
};

using LatchLoop = void (*)(const LatchJob&);

/// Each: the loop for patches with this side. To be called only where the instruction set is there.
LatchLoop latchLoopBaseline(int side);
LatchLoop latchLoopAvx2(int side);

}  // namespace MirelAlgorithms
