/// Matching of the ORB features of two texture images.
///
///     std::vector<cv::Vec2f> here, there;
///     if (textureExtractAndMatch(image1, image2, here, there, {}) == 0) ...  // here[i] is there[i]
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/Host.h>

#include <opencv2/core/mat.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Matches two sets of features by descriptor and position.
///
/// Every descriptor is compared with every descriptor of the other set, by Hamming distance (over pairs of bits when
/// "txmORBWTA_K" is 3 or 4). A match has to pass, in this order:
///
/// 1. ratio: nearest / next nearest distance is not >= "txmUniquenessRatio", and there is a next nearest one (Lowe,
///    IJCV 60, 2004). With a ratio of 0 or below, or not a number: the row of the first set is the nearest one of the
///    row it is matched with, and no other row that this holds for is nearer
/// 2. agreement: both directions, first set to second and second to first, give the match
/// 3. distance: its positions are at most "txmMaxKeyDist" pixels apart
/// 4. homography: it fits the homography that RANSAC finds within "txmReprojectionError" pixels (2000 iterations,
///    confidence 0.995). Fewer than 5 matches, or none found: no match is left
///
/// @param points1       positions (x, y) in pixels, one per row of descriptors1
/// @param descriptors1  CV_8UC1, one row per feature, fewer than 2^18 rows; see `textureExtract`
/// @param points2       likewise of the second set; only read
/// @param descriptors2  likewise, of the same width
/// @param matches       (index in set 1, index in set 2, descriptor distance) are appended, ascending in the first
/// @param attrs         settings; null for the defaults
/// @return              0 success, also with no match; 1 points1 empty; 2 descriptors1 empty; 3 points1 and
///                      descriptors1 differ in number; 4 points2 empty; 5 descriptors2 empty; 6 points2 and
///                      descriptors2 differ in number. The first that applies
///
/// On any other result than 0 and on exceptions `matches` is untouched. `std::invalid_argument` refuses descriptors of
/// other types, of different widths, with too many rows or more than 2047 columns, and "txmORBWTA_K" outside 2 to 4.
///
/// Any number of calls at once. Time O(rows1 * rows2), memory O(rows1 + rows2).
MIREL_API int textureMatch(const std::vector<cv::Vec2f>& points1, const cv::Mat& descriptors1,
                           std::vector<cv::Vec2f>& points2, const cv::Mat& descriptors2,
                           std::vector<cv::Vec3i>& matches, SmartPtr<AttrContainer> attrs);

/// Matches two sets of features by descriptor alone: steps 1 and 2 of the other overload.
///
/// @return  0 success, also with no match; 2 descriptors1 empty; 5 descriptors2 empty
MIREL_API int textureMatch(const cv::Mat& descriptors1, const cv::Mat& descriptors2, std::vector<cv::Vec3i>& matches,
                           SmartPtr<AttrContainer> attrs);

/// Finds the features of two images (see `textureExtract`) and matches them (see `textureMatch`).
///
/// With "txmDraw" at 0 or above the matches are shown over both images in a window named "matches", also when there are
/// none, for as many milliseconds or until a key is pressed; 0 waits for the key. Without a display to show them on
/// that is a `std::runtime_error`.
///
/// @param image1   8- or 16-bit, 1, 3 or 4 channels (to be drawn: 8-bit); not written
/// @param image2   likewise
/// @param points1  the positions of the matches in the first image, (x, y) in pixels, are appended
/// @param points2  those in the second image are appended, in the same order
/// @param attrs    settings; null for the defaults
/// @return         0 success, also with no match; 1 image1 is empty; 2 image2 is empty
///
/// On any other result than 0 and on exceptions both outputs are untouched. Exceptions as in `textureExtract`. Any
/// number of calls at once while nothing is drawn; windows belong to the main thread.
MIREL_API int textureExtractAndMatch(const cv::Mat& image1, const cv::Mat& image2, std::vector<cv::Vec2f>& points1,
                                     std::vector<cv::Vec2f>& points2, SmartPtr<AttrContainer> attrs);

}  // namespace MirelAlgorithms
