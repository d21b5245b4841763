/// Rows of a point list that agree with their neighbours.
#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Rows whose column 4 is less than 0.1 from the median of column 4 over their neighbours: the nearest in columns 2 and
/// 3, at most ten, within a squared distance of 0.1, the row itself among them. Rows with fewer than six go.
///
/// Neighbours are found by four randomised k-d trees (Silpa-Anan and Hartley, "Optimised KD-trees for fast image
/// descriptor matching", CVPR 2008), approximately, with 32 checks. Their random numbers begin anew on every call, and
/// the generator of the calling thread goes on undisturbed.
///
/// @param points  CV_32FC1, at least five columns
std::vector<int> rowsNearNeighbourMedian(const cv::Mat& points);

}  // namespace MirelAlgorithms
