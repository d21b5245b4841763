/// Image enhancement as the steps of this folder want it.
#pragma once

#include <MirelAlgorithms/Host.h>

#include <opencv2/core/mat.hpp>

namespace MirelAlgorithms {

/// The image as `MirelCore::enhance` makes it, without further parameters. May share memory of the host.
inline cv::Mat enhanced(const cv::Mat& image, int strength) {
  cv::Mat result;
  MirelCore::enhance(image, result, strength, {});
  return result;
}

}  // namespace MirelAlgorithms
