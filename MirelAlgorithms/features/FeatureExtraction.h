/// Features of a grey camera image, spread over the image, with the detector that the settings choose.
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/Host.h>

#include <opencv2/core/mat.hpp>

namespace MirelAlgorithms {

MIREL_API bool retrieveFeatures(const cv::Mat& image, cv::Mat& features, SmartPtr<AttrContainer> settings,
                                bool descriptors);

}  // namespace MirelAlgorithms
