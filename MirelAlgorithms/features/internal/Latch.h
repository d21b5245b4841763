/// LATCH descriptors (Levi, Hassner: LATCH: Learned Arrangements of Three Patch Codes, WACV 2016), the bits of OpenCV's
/// xfeatures2d module: by a loop of our own where the source of that module is known, else by the module.
#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Length and patch of LATCH where settings choose them.
struct LatchSettings {
  int bytes;
  int halfPatch;

  template <class Key>
  void keys(Key& key) {
    key(L"DescLengthBytes", bytes, 16, "length of a LATCH descriptor, bytes: 1, 2, 4, 8, 16, 32 or 64");
    key(L"PatchSize", halfPatch, 3, "half side of the patches that LATCH compares, pixels, 0 to 90");
  }
};

/// LATCH, rotation invariant, of the image smoothed with sigma 2. Key points nearer to the border than 24 pixels and a
/// half patch are dropped.
///
/// @param function  for the message of `std::invalid_argument`, which refuses half patches outside 0 to 90: sums of
///                  squares of larger patches would not fit their integers
///
/// Other lengths than those above: OpenCV's error. A library without xfeatures2d: `std::runtime_error`.
void computeLatch(const char* function, const cv::Mat& image, std::vector<cv::KeyPoint>& keyPoints,
                  cv::Mat& descriptors, const LatchSettings& settings);

}  // namespace MirelAlgorithms
