/// Binary descriptors for features that were already found.
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/Host.h>

#include <opencv2/core/mat.hpp>

namespace MirelAlgorithms {

MIREL_API bool retrieveDescriptors(const cv::Mat& image, cv::Mat& features, cv::Mat& descriptors,
                                   SmartPtr<AttrContainer> settings);

}  // namespace MirelAlgorithms
