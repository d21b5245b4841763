/// ORB as texture matching uses it: detector in cells, descriptor, norm.
#pragma once

#include <MirelAlgorithms/Host.h>

#include <opencv2/features2d.hpp>
#include <vector>

namespace MirelAlgorithms {

struct TextureFeatures {
  std::vector<cv::KeyPoint> keyPoints;
  cv::Mat descriptors;  ///< a row per key point
};

/// A new ORB with the parameters of the settings.
cv::Ptr<cv::ORB> createTextureOrb(const SmartPtr<AttrContainer>& attrs);

/// The features of an image, see `textureExtract`, whose errors are thrown in the name of `function`.
///
/// @param image  not empty
TextureFeatures extractTexture(const char* function, const cv::Mat& image, const SmartPtr<AttrContainer>& attrs);

}  // namespace MirelAlgorithms
