/// The host's image services.
#pragma once

#include <VoskBase/Export.h>

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace MirelCore {

/// Contrast-limited adaptive histogram equalisation (Zuiderveld, Graphics Gems IV, 1994) of the grey image.
///
/// @param source       8- or 16-bit image of 1, 3 (BGR) or 4 (BGRA) channels; never written, not even when it is also
///                     given as `destination`
/// @param destination  8-bit image of one channel, the size of the source, in memory of its own
/// @param strength     clip limit times 30000; 0 or less: conversion to 8-bit grey and nothing else
/// @param parameters   not used
///
/// 16-bit values are divided by 256. Throws `std::invalid_argument` for every other kind of source.
/// Any number of threads.
HOST_API void enhance(const cv::Mat& source, cv::Mat& destination, int strength, const std::vector<int>& parameters);

/// Moves key points in place to the sub-pixel corner near them (cv::cornerSubPix on the first image, windows of
/// 11 x 11 pixels, at most 30 steps, down to 0.01 px).
///
/// Key points whose window would leave the image stay where they are, and so does everything when there is no image
/// or the first one is empty or not 8-bit grey. `mode` is not used. Any number of threads on their own key points.
HOST_API void subPixel(const std::vector<cv::Mat>& images, int mode, std::vector<cv::KeyPoint>& keyPoints);

}  // namespace MirelCore
