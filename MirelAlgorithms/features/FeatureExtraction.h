/// Features of a grey camera image, spread over the image, with the detector that the settings choose.
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/Host.h>

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Finds features by the detector that `FBMType` chooses:
///
///     0  fixed-point corner pipeline: `retrieveFeaturesFPGA`, strongest first
///     2  detector of `FBMFeatureType`: 0 GFTT, 1 AKAZE, 2 MSER, 5 BRISK, everything else ORB
///     1  and everything else: ORB, refined to sub-pixel positions by `MirelCore::subPixel`
///
/// 1 and 2 enhance the image (`FBMEnhancement`, 80000) and spread the features: each of `FBMnCells` x `FBMnCells` cells
/// keeps its strongest `FBMnFeatures` / cells^2 (integer quotient), cell after cell, row by row. The budget is 900 by
/// default for the fixed-point pipeline, 2000 for the others; one below cells^2 finds nothing.
///
/// @param image        8-bit grey, not empty; not written
/// @param features     N x 1, CV_32FC(5): x, y, size, angle, response; pixels, degrees; empty when nothing is found
/// @param settings     keys of the step that runs, see `settingsCatalogue`; null: defaults
/// @param descriptors  with `FBMType` 2: run `retrieveDescriptors` too and keep only the features it can describe. Its
///                     descriptors are not handed out; without effect for other values
/// @return             true, or the result of the step that was called
///
/// Errors leave `features` as it was. `std::invalid_argument`: another kind of image, cells below 1 or above the
/// image's rows or columns. Errors of `retrieveFeaturesFPGA` and `retrieveDescriptors` and OpenCV's own are passed on;
/// among those is the region error of images so small that their remainder of columns or rows counts as one more cell
/// (11 columns in 3 cells).
///
/// Any number of threads on their own outputs. Cost of 1 and 2: little more than one run of the detector on the whole
/// image.
MIREL_API bool retrieveFeatures(const cv::Mat& image, cv::Mat& features, SmartPtr<AttrContainer> settings,
                                bool descriptors);

/// Finds features with ORB and describes them with LATCH, both on the enhanced image (`FBMEnhancement`).
///
/// Detection, cells, budget and refinement are those of the other overload with `FBMType` 1; the descriptors those of
/// `retrieveDescriptors` with `FBMType` 1 (`DescLengthBytes`, `PatchSize`), row i for key point i. Key points that
/// LATCH cannot describe are dropped.
///
/// @param image        8-bit grey, not empty; not written
/// @param keyPoints    replaced
/// @param descriptors  one row of CV_8UC1 per key point; without any key point it has no rows
/// @param settings     keys of the two steps; null: defaults
/// @return             true
///
/// Errors are those of the two steps and leave both outputs as they were. Any number of threads on their own outputs.
MIREL_API bool retrieveFeatures(const cv::Mat& image, std::vector<cv::KeyPoint>& keyPoints, cv::Mat& descriptors,
                                SmartPtr<AttrContainer> settings);

}  // namespace MirelAlgorithms
