/// A photograph and the features that texture matching finds in it.
#pragma once

#include "input/FrameSource.h"
#include "options/SettingsOption.h"

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

namespace mirel {

struct TextureImage {
  int number = 0;  ///< from 1
  std::string name;
  cv::Mat grey;
  std::vector<cv::Vec2f> points;  ///< pixels
  cv::Mat descriptors;            ///< one row per point

  int features() const { return static_cast<int>(points.size()); }
};

/// Reads an image; its features are still to be found. Throws `UsageError`.
TextureImage readTextureImage(const std::string& file, int number, std::vector<InputFile>& inputs);

/// Finds and describes the features. Throws `UsageError` that names the image.
void extractTexture(TextureImage& image, const Settings& settings);

}  // namespace mirel
