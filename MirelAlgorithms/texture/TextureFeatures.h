/// ORB features of texture images: photographs of the scanned surface.
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/Host.h>

#include <opencv2/core/mat.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Finds ORB features spread over the cells of an image and describes them (Rublee, Rabaud, Konolige, Bradski, "ORB: an
/// efficient alternative to SIFT or SURF", ICCV 2011).
///
/// The image is enhanced ("txmToGray") and searched in "txmCells" x "txmCells" cells of columns / cells by rows / cells
/// pixels, integer quotients; what is left over at the right and bottom is not searched while it is less than half a
/// cell. Each cell keeps its "txmMaxKeys" / "txmCells" features of largest response, and those that tie with the last:
/// cells per side, so all cells together give up to about "txmMaxKeys" x "txmCells". Features found twice count once.
/// The "txmORB..." keys are the parameters of OpenCV's ORB.
///
/// @param image        8- or 16-bit, 1, 3 or 4 channels; not written
/// @param points       the positions (x, y) in pixels are appended, in the order of the descriptors' rows
/// @param descriptors  replaced: one row per position, CV_8UC1, 32 columns; empty when nothing is found
/// @param attrs        settings; null for the defaults
/// @return             0 success, also with no features; 1 the image is empty
///
/// On any other result than 0 and on exceptions both outputs are untouched. `std::invalid_argument` refuses fewer cells
/// than 1 or more than the image has rows or columns, no pyramid level, a pyramid too large to address, and more ORB
/// features than 2^24 or so many below 0 that OpenCV cannot take them. What is left over and makes a further cell that
/// leaves the image is OpenCV's region error; parameters that OpenCV refuses are its errors too.
///
/// Any number of calls at once. Time is that of one detection and one description by ORB, whatever the number of cells,
/// except with an edge threshold below 15 or enlarged pyramid levels: then each cell is a detection of its own.
MIREL_API int textureExtract(const cv::Mat& image, std::vector<cv::Vec2f>& points, cv::Mat& descriptors,
                             SmartPtr<AttrContainer> attrs);

}  // namespace MirelAlgorithms
