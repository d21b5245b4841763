/// Features of one texture image that are found again in others.
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/Host.h>

#include <opencv2/core/mat.hpp>
#include <vector>

namespace MirelAlgorithms {

/// A feature of the first image and what became of it.
struct MultiMatch {
  cv::Vec2f point;           ///< position (x, y) in the first image, pixels
  cv::Mat descriptor;        ///< its row of the first image's descriptors; shares their memory
  int multiplicity = 1;      ///< images it was found in, with the first one
  double maxDistance = 0.0;  ///< largest drift of the descriptor among the images it was found in
};

/// Matches the first image with each of the others and keeps the features that were found often enough.
///
/// The drift of a descriptor a that is matched with b is the number of bits set in a - b, byte by byte, a negative
/// difference counting as 0: the bits of those bytes alone in which a is the larger. Neither symmetric, nor the
/// distance that matching goes by.
///
/// @param images  8- or 16-bit, 1, 3 or 4 channels, of any sizes; empty ones after the first, and those in which
///                nothing is found, are skipped
/// @param result  expected to be empty. The features of the first image with a multiplicity of at least
///                "txmMinMultipicity" are appended. Entries that are there on entry are counted as its first features
/// @param attrs   settings, those of `textureExtract` and `textureMatch` too; null for the defaults
/// @return        0 success, also with an empty result; 7 there are no images; 1 the first image is empty
///
/// On any other result than 0 and on exceptions, those of `textureExtract` and `textureMatch`, `result` is untouched.
/// Any number of calls at once.
MIREL_API int textureMultiMatch(const std::vector<cv::Mat>& images, std::vector<MultiMatch>& result,
                                SmartPtr<AttrContainer> attrs);

}  // namespace MirelAlgorithms
