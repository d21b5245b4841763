/// The second frame of a match, laid out for search: features in blocks of sixteen neighbours, structure of arrays.
///
/// Descriptors are transposed by 64-bit words: word w of all sixteen features of a block lies side by side, so that a
/// vector holds the same word of several features. Within a row of words the features are permuted,
///
///     place in the row   0  1  2  3  4  5  6  7  8  9 10 11 12 13 14 15
///     feature            0  4  8 12  1  5  9 13  2  6 10 14  3  7 11 15
///
/// so that four vectors of four 64-bit sums become sixteen 16-bit sums in feature order by shifting the vectors by 0,
/// 16, 32 and 48 bits and merging them.
#pragma once

#include <MirelAlgorithms/matching/MatchRecords.h>
#include <MirelAlgorithms/matching/internal/Lanes.h>

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Place of a feature within each row of words of its block.
constexpr std::size_t wordPlace(std::size_t feature) { return feature % 4 * 4 + feature / 4; }

/// Box around points, pixels. Not a number when one of the points is not finite.
struct Box {
  float left, top, right, bottom;
};

/// Boxes of sixteen blocks.
struct BoxLanes {
  Lanes<float> left, top, right, bottom;
};

class FeatureBlocks {
 public:
  /// @param rows  descriptors, CV_8UC1, one row per key point
  FeatureBlocks(const std::vector<cv::KeyPoint>& keyPoints, const cv::Mat& rows);

  std::size_t blocks() const { return index.size(); }

  /// Whether every feature is surely inside or on the circle.
  bool allInside(const FBPrediction& circle) const;

  std::size_t size;   ///< features; the last block may have places to spare
  std::size_t words;  ///< 64-bit words per descriptor; bytes left over are ignored
  unsigned shift;     ///< takes a count of bits to the 1024-bit scale

  std::vector<Lanes<std::uint64_t>> descriptors;  ///< [block * words + word]
  std::vector<Lanes<float>> x, y;                 ///< positions, pixels
  std::vector<Lanes<std::int32_t>> index;         ///< numbers of the key points
  std::vector<BoxLanes> boxes;                    ///< of the blocks, sixteen by sixteen

 private:
  void place(std::size_t i, const cv::KeyPoint& keyPoint, std::int32_t number, const unsigned char* descriptor);
  void findBoxes();

  Box around_;  // all features
};

}  // namespace MirelAlgorithms
