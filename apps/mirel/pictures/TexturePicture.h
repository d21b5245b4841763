/// Pictures of matched photographs.
#pragma once

#include "texture/TextureResult.h"

#include <opencv2/core/mat.hpp>

namespace mirel {

/// Two images side by side, a line per match, coloured by descriptor distance.
cv::Mat drawTexturePair(const TextureImage& from, const TextureImage& to, const TexturePair& pair);

/// The first image and its features; those found in other images coloured by the number of images.
cv::Mat drawMultiplicity(const TextureResult& result);

/// Image by image: matches of each two as coloured cells, small pictures of the images along the edges.
cv::Mat drawTable(const TextureResult& result);

}  // namespace mirel
