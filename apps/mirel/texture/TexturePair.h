/// Two photographs matched, and how many matches each test left.
#pragma once

#include "texture/TextureImage.h"

#include <opencv2/core/types.hpp>
#include <string>
#include <vector>

namespace mirel {

/// Bounds of the tests, as the library reads them.
struct TextureTests {
  int norm;             ///< of the descriptors: cv::NORM_HAMMING or cv::NORM_HAMMING2
  double ratio;         ///< 0 or less: no ratio test
  double longestShift;  ///< pixels

  explicit TextureTests(const Settings& settings);
};

/// Each test takes what the one before has left.
struct TexturePair {
  int from = 0, to = 0;  ///< numbers of the images
  int features1 = 0, features2 = 0;
  int ratioForward = 0, ratioBackward = 0;  ///< features of the first and of the second image that pass the ratio test
  int agreed = 0;                           ///< matches that both directions give
  int withinDistance = 0;                   ///< of these, positions not too far apart
  std::vector<cv::Vec3i> matches;           ///< that fit one homography: feature of the first, of the second, distance

  int matchCount() const { return static_cast<int>(matches.size()); }
};

TexturePair matchTexture(const TextureImage& from, TextureImage& to, const TextureTests& tests,
                         const Settings& settings);

/// Which test left nothing, and what came before it.
std::string whyNoMatch(const TexturePair& pair, const TextureTests& tests);

}  // namespace mirel
