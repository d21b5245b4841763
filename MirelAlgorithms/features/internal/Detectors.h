/// OpenCV's detectors with this library's parameters.
#pragma once

#include <opencv2/features2d.hpp>

namespace MirelAlgorithms {

/// A new detector.
///
/// @param featureType  0 GFTT, 1 AKAZE, 2 MSER, 5 BRISK; 3, 4 and everything else ORB
cv::Ptr<cv::Feature2D> createDetector(int featureType);

/// ORB with the parameters that both its detector and its descriptor use.
cv::Ptr<cv::ORB> createOrb();

/// BRISK likewise.
cv::Ptr<cv::BRISK> createBrisk();

}  // namespace MirelAlgorithms
