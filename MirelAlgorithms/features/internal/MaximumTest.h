/// Tests for isolated maxima of a response map.
#pragma once

#include <MirelAlgorithms/Host.h>

#include <opencv2/core/mat.hpp>

namespace MirelAlgorithms {

enum class MaximumTest {
  single,    ///< above every neighbour
  ring,      ///< that, and above mean + 3 standard deviations of the window's outer ring
  weighted,  ///< above every neighbour by a margin that grows with the distance
};

/// "SingleMaximum7x7Patch", "AverageRingMask", and the weighted test for every other text.
MaximumTest maximumTest(const String& name);

// All tests look at the window of `patchSize` (5 or 7) pixels around (x, y), which lies inside the CV_32FC1 map.

/// Strictly greater than every other value of the window.
bool checkLocalMaximumFPGA(const cv::Mat& map, int x, int y, int patchSize);

/// At least 0 and more than mean + 3 standard deviations of the one-pixel ring at the window's edge.
bool checkRingFPGA(const cv::Mat& map, int x, int y, int patchSize);

/// No neighbour with weight * epsilon + neighbour > centre. Weights are 0 to 3, and 0 on one side of the centre only:
/// of two equal neighbours exactly one passes. Maps of another type: `std::invalid_argument`.
bool checkPatchFPGA(const cv::Mat& map, int x, int y, int patchSize, double epsilon);

/// The ring of a window as 8-bit mask: 255 in the first and last row and column, 0 inside. Made once for a process.
const cv::Mat& initRingMask(int patchSize);

/// The test of a detector run: 7x7 window, epsilon 2^-12.
bool isMaximum(const cv::Mat& map, int x, int y, MaximumTest test);

}  // namespace MirelAlgorithms
