/// The nearest candidates of one feature of the first frame: features of the second frame inside a circle.
#pragma once

#include <MirelAlgorithms/matching/MatchRecords.h>
#include <MirelAlgorithms/matching/internal/ColumnMinima.h>
#include <MirelAlgorithms/matching/internal/FeatureBlocks.h>

#include <opencv2/core/mat.hpp>
#include <vector>

namespace MirelAlgorithms {

/// The two nearest candidates of a feature.
struct BestTwo {
  std::uint16_t best = notMeasured;
  std::uint16_t second = notMeasured;
  std::int32_t index = -1;  ///< key point at `best`, the lowest on ties; -1: there is no candidate
  std::int32_t place = -1;  ///< where it is in the blocks
};

/// One search, as the loops behind `CircleSearch` see it.
struct CircleSearchJob {
  const FeatureBlocks& features;
  const unsigned char* descriptor;  ///< of the feature, as many words as the blocks' descriptors have
  const FBPrediction& circle;       ///< where candidates lie
  const FBPrediction* measured;     ///< a second circle they must lie in, if any
  ColumnMinima* columns;            ///< where all distances go, if anywhere
  std::uint16_t maxDistance;        ///< largest distance of a candidate
  std::uint32_t* list;              ///< scratch, one entry per block
  Lanes<std::uint16_t>* distances;  ///< scratch, one entry per block
};

/// Searches the candidates of one feature after another. Keeps buffers between them: one object per thread.
class CircleSearch {
 public:
  /// @param descriptors  first frame, CV_8UC1, as wide as the second's
  /// @param maxDistance  largest distance of a candidate, 1024-bit scale
  CircleSearch(const cv::Mat& descriptors, const FeatureBlocks& features, std::uint16_t maxDistance);

  /// Nearest candidates of feature i in a circle. Everything in the circle goes into `columns`, however distant.
  BestTwo measure(std::size_t i, const FBPrediction& circle, ColumnMinima& columns);

  /// Nearest candidates of feature i in a circle, among those in the circle that `measure` was given.
  BestTwo searchAgain(std::size_t i, const FBPrediction& circle, const FBPrediction& measured);

 private:
  BestTwo search(std::size_t i, const FBPrediction& circle, const FBPrediction* measured, ColumnMinima* columns);

  const cv::Mat& descriptors_;
  const FeatureBlocks& features_;
  std::uint16_t maxDistance_;
  BestTwo (*search_)(const CircleSearchJob&);
  std::vector<std::uint32_t> list_;
  std::vector<Lanes<std::uint16_t>> distances_;
};

}  // namespace MirelAlgorithms
