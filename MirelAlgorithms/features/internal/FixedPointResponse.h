/// Response map of the fixed-point stages: luma, Sobel, products, block sums, minimum eigenvalue.
#pragma once

#include <MirelAlgorithms/features/internal/FixedPointStages.h>

#include <opencv2/core/mat.hpp>

namespace MirelAlgorithms {

/// The map, and its largest value before saturation. Logs one line for each stage.
///
/// @param image     8-bit grey
/// @param response  CV_32SC1, or CV_32FC1 holding whole numbers; image size
///
/// Takes the fused form where it applies, else the whole-image form; both give the same values.
double cornerMinEigenValFpga(const cv::Mat& image, const FixedPointStages& stages, cv::Mat& response);

/// Whole-image form: every stage a matrix of doubles, dumped where the settings say so. Any widths. CV_32SC1.
double wholeImageResponse(const cv::Mat& image, const FixedPointStages& stages, cv::Mat& response);

/// Whether the fused form gives the whole-image form's values: no intermediate dumps, blocks of 3, 5 or 7 pixels, and
/// widths for which gradients fit 16 and all else 32 bits.
bool canFuse(const cv::Mat& image, const FixedPointStages& stages);

/// Fused form: all stages row by row in integers, a few rows at a time. CV_32FC1. Only where `canFuse`.
double fusedResponse(const cv::Mat& image, const FixedPointStages& stages, cv::Mat& response);

/// Every element of a CV_64FC1 matrix becomes floor(factor * element).
void scaleAndFloor(cv::Mat& matrix, double factor);

}  // namespace MirelAlgorithms
