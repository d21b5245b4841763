/// Guided matching of two frames' features, forward and backward.
///
///     FBMValidationParams params(Narrow);
///     std::vector<FBMatch> matches;
///     std::vector<FBPrediction> predictions;  // empty: search around each point's own position
///     bool enough = matchFeatures(points1, descriptors1, points2, descriptors2, params, matches, predictions);
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/matching/MatchRecords.h>
#include <MirelAlgorithms/matching/ValidationParams.h>

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Pairs the key points of two frames by their binary descriptors.
///
/// A point of the second frame is a candidate for point i of the first when it is measured and near enough: inside or
/// on the search circle of prediction i. Distances are Hamming distances on the 1024-bit scale (see Hamming.h). Point i
/// is paired with its nearest candidate j (the lower index on ties) when
///
///     distance(i, j) <= maxDistance
///     distance(i, j) / second <= ratio         second: next nearest candidate within maxDistance, 65535 without one
///     distance(k, j) > floor(distance(i, j) / ratio)   for every other point k that j was measured with
///
/// With `params.refine` the image motion of these pairs (MotionEstimate) then moves the predictions of unpaired points,
/// all circles shrink, and the pairs are chosen anew among the candidates already measured.
///
/// @param keyPoints1    first frame; only positions are read
/// @param descriptors1  N1 x width, CV_8UC1, one row per key point; views and rows of any alignment are fine. Trailing
///                      bytes beyond a multiple of 8 are ignored; below 8 bytes nothing matches
/// @param keyPoints2    second frame, likewise
/// @param descriptors2  N2 x width, CV_8UC1
/// @param params        limits
/// @param matches       replaced by the pairs, ascending in `queryIdx`
/// @param predictions   used as given when it has N1 entries, else filled with the first frame's own positions and the
///                      radius of `params` (state 1). On return paired points are at their match (state 4)
/// @return              whether there are at least min(N1 - 2, N2 - 2, minMatches) pairs, compared without sign: a
///                      negative bound is never reached
///
/// Returns false and leaves both outputs alone when a frame is empty, when rows and key points differ in number, or
/// when the widths differ. Throws std::invalid_argument, outputs untouched, for a width of 0 and for other matrix
/// types. Circles and ratios are tested in single precision; a position, radius or quotient that is not a number
/// excludes nothing.
///
/// The loops over the first frame run on oneTBB; the result does not depend on the number of threads. Any number of
/// calls at once. Time O(N1 * N2) for unlimited circles, less the smaller the circles; memory O(N1 + N2) per thread.
MIREL_API bool matchFeatures(const std::vector<cv::KeyPoint>& keyPoints1, const cv::Mat& descriptors1,
                             const std::vector<cv::KeyPoint>& keyPoints2, const cv::Mat& descriptors2,
                             const FBMValidationParams& params, std::vector<FBMatch>& matches,
                             std::vector<FBPrediction>& predictions);

}  // namespace MirelAlgorithms
