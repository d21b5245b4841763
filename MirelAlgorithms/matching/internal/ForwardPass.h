/// Nearest candidates of every feature of the first frame.
#pragma once

#include <MirelAlgorithms/matching/internal/CircleSearch.h>

#include <vector>

namespace MirelAlgorithms {

/// The forward pass of one call, in one or two stages.
class ForwardPass {
 public:
  /// @param descriptors1  CV_8UC1, as wide as the descriptors of the second frame
  /// @param maxDistance   largest distance of a candidate, 1024-bit scale
  ForwardPass(const cv::Mat& descriptors1, const FeatureBlocks& features2, std::uint16_t maxDistance);

  /// Measures every feature against what lies in its circle, one per feature.
  void measure(const std::vector<FBPrediction>& circles);

  /// Finds the nearest candidates anew, in other circles, but only among pairs that were measured.
  void searchAgain(const std::vector<FBPrediction>& circles);

  /// Nearest candidates, by feature of the first frame.
  const std::vector<BestTwo>& best() const { return best_; }

  /// Smallest of all distances measured to a feature of the second frame, in the order of its blocks.
  const ColumnMinima& columns() const { return columns_; }

 private:
  void run(const std::vector<FBPrediction>* again);

  const cv::Mat& descriptors1_;
  const FeatureBlocks& features2_;
  std::uint16_t maxDistance_;
  std::vector<FBPrediction> measured_;  // circles in which pairs were measured
  std::vector<BestTwo> best_;
  ColumnMinima columns_;
};

}  // namespace MirelAlgorithms
