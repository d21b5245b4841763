/// Which rows of one set match which of the other, each way by itself.
#pragma once

#include <MirelAlgorithms/texture/internal/NearestRows.h>

#include <opencv2/core/types.hpp>
#include <vector>

namespace MirelAlgorithms {

/// At most one match for each row, in the order of rows, by the ratio test.
///
/// @param ratio  bound of nearest over next nearest distance; 0 / 0 passes
std::vector<cv::DMatch> matchesByRatio(const std::vector<NearestRow>& ofQueries, double ratio);

/// At most one match for each row, in the order of rows: the nearest of those rows of the other set that have it as
/// their nearest; the first of those at the same distance. What OpenCV's brute-force matcher calls a cross check.
std::vector<cv::DMatch> matchesByChoice(std::size_t queries, const std::vector<NearestRow>& ofOthers);

/// The forward matches that the backward matches give too, with the same distance, in forward order.
std::vector<cv::DMatch> crossCheckMatches(const std::vector<cv::DMatch>& forward,
                                          const std::vector<cv::DMatch>& backward, std::size_t backwardQueries);

}  // namespace MirelAlgorithms
