/// What smoothing has done to a depth image.
#pragma once

#include "output/Report.h"

#include <nlohmann/json.hpp>
#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <optional>
#include <string>

namespace mirel {

/// A depth image before and after, CV_16UC1, 0 where there is no depth, with the numbers that tell them apart.
struct DepthChange {
  std::string image, filter;
  int window = 0;
  cv::Mat before, after;

  std::int64_t validBefore = 0, validAfter = 0;  ///< pixels with depth
  std::int64_t removed = 0;                      ///< pixels that had depth and have none
  std::int64_t changed = 0;                      ///< pixels with depth in both, but another one
  double sumOfChanges = 0;                       ///< of absolute changes, over the pixels with depth in both
  int largestChange = 0;               ///< after less before; the first in reading order of equally large ones
  std::optional<cv::Point> largestAt;  ///< none where nothing has changed

  double shareBefore() const { return share(validBefore); }
  double shareAfter() const { return share(validAfter); }
  double meanChange() const { return validAfter == 0 ? 0 : sumOfChanges / static_cast<double>(validAfter); }

 private:
  double share(std::int64_t pixels) const { return static_cast<double>(pixels) / static_cast<double>(before.total()); }
};

/// Fills in the numbers; names, window and images are there.
void countChanges(DepthChange& change);

/// Fields are described in docs/depth-files.md.
nlohmann::json resultJson(const DepthChange& change);

/// Without pictures.
Report depthReport(const DepthChange& change);

/// The lines of the console.
std::string summaryText(const DepthChange& change);

}  // namespace mirel
