/// Detection spread over the image: the same quota of key points for every cell of a grid.
#pragma once

#include <functional>
#include <opencv2/features2d.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Settings of the detection steps. The default of the budget differs from that of `retrieveFeatures`.
struct DetectionSettings {
  int enhancement;
  int cells;
  int budget;

  template <class Key>
  void keys(Key& key) {
    key(L"FBMEnhancement", enhancement, 80000, "strength of the image enhancement before detection");
    key(L"FBMnCells", cells, 3, "cells per image side");
    key(L"FBMnFeatures", budget, 2000, "feature budget of all cells together");
  }
};

/// Shortens and orders the key points of one cell by their responses; the other fields may not be there yet.
using QuotaRule = std::function<void(std::vector<cv::KeyPoint>&)>;

/// The key points of every cell, cell after cell, row by row: those that the detector finds with a mask of the cell.
///
/// A cell is (columns / cells) x (rows / cells) pixels, integer quotients. Columns and rows that are left over at the
/// right and bottom belong to no cell while they are fewer than half a cell (integer quotient); more of them make a
/// further cell, and where that one leaves the image OpenCV's region error is thrown.
///
/// @param image         8-bit grey, not empty; not written
/// @param detector      GFTT: with the default gradient size
/// @param cellsPerSide  1 to the smaller of the image's rows and columns
std::vector<cv::KeyPoint> detectInCells(const cv::Mat& image, cv::Feature2D& detector, int cellsPerSide,
                                        const QuotaRule& keepQuota);

/// `detectInCells` with budget / (cells * cells) key points per cell, integer quotient. A cell with more of them keeps
/// those of largest response, in falling order, the earlier one first where responses are equal; any other cell keeps
/// the detector's order.
///
/// @param function  for the message of `std::invalid_argument`, which refuses fewer cells than 1 or more than the
///                  image has rows or columns
std::vector<cv::KeyPoint> detectInCells(const char* function, const cv::Mat& image, cv::Feature2D& detector,
                                        const DetectionSettings& settings);

/// `detectInCells` with ORB, then refined to sub-pixel positions on the same image.
std::vector<cv::KeyPoint> detectOrbSubPixel(const char* function, const cv::Mat& image,
                                            const DetectionSettings& settings);

}  // namespace MirelAlgorithms
