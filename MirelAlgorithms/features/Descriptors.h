/// Binary descriptors for features that were already found.
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/Host.h>

#include <opencv2/core/mat.hpp>

namespace MirelAlgorithms {

/// Describes features by bit strings that are compared by Hamming distance, with the kind that `FBMType` chooses:
///
/// | FBMType            | descriptor                                                                        |
/// |--------------------|-----------------------------------------------------------------------------------|
/// | 0                  | fixed-point, 16 bytes: comparisons of smoothed pixels, as hardware does them      |
/// | 2                  | FBMDescriptorType: 1 AKAZE, 2 FREAK, 3 BRISK, 4 ORB, everything else 32-byte LATCH |
/// | 1, everything else | LATCH of DescLengthBytes bytes, half patches of PatchSize pixels (0 to 90)        |
///
/// All see the image after `MirelCore::enhance` with strength `FBMEnhancement`. The fixed-point descriptor describes
/// every feature. It truncates positions to whole pixels and addresses pixels linearly: what lies left or right of the
/// image is read from the previous or next row, what lies before the first or behind the last pixel is 0, and so is
/// everything around a position that is NaN or fits no 32-bit integer. The other kinds drop features they cannot
/// describe: near the border, or with a position or angle that is not finite (BRISK: an angle outside -360 to 719
/// degrees).
///
/// @param image        8-bit grey, not empty; not written
/// @param features     N x 1, CV_32FC(5): x, y, size, angle, response; pixels, degrees. Kinds other than the
///                     fixed-point one rewrite it: row i is the feature that row i of `descriptors` describes
/// @param descriptors  one row of CV_8UC1 per feature; without any feature it has no rows
/// @param settings     `FBMType`, `FBMEnhancement`, `FBMDescriptorType`, `DescLengthBytes`, `PatchSize`; null: defaults
/// @return             true
///
/// Errors leave both outputs as they were. `std::invalid_argument`: another kind of image or of feature matrix, a half
/// patch out of range. `std::runtime_error`: LATCH or FREAK in a library that was built without OpenCV's xfeatures2d
/// module. OpenCV's own errors are passed on; AKAZE throws one for any feature, because it describes only what it
/// detected itself.
///
/// Any number of threads on their own outputs. The fixed-point descriptors are computed in parallel.
MIREL_API bool retrieveDescriptors(const cv::Mat& image, cv::Mat& features, cv::Mat& descriptors,
                                   SmartPtr<AttrContainer> settings);

}  // namespace MirelAlgorithms
