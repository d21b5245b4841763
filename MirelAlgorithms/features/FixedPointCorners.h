/// Corners by a minimum-eigenvalue pipeline whose every stage repeats the integer arithmetic of a hardware detector.
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/Host.h>

#include <memory>
#include <opencv2/core/mat.hpp>

namespace MirelAlgorithms {

MIREL_API bool retrieveFeaturesFPGA(const cv::Mat& image, cv::Mat& features, SmartPtr<AttrContainer> settings,
                                    std::shared_ptr<cv::Mat> eigenImage);

}  // namespace MirelAlgorithms
