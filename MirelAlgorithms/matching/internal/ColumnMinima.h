/// The two smallest distances of each feature of the second frame.
#pragma once

#include <MirelAlgorithms/matching/internal/Lanes.h>

#include <algorithm>
#include <vector>

namespace MirelAlgorithms {

/// Smallest and second smallest measured distance, block by block; equal distances count twice. `notMeasured` where
/// there are fewer.
struct ColumnMinima {
  explicit ColumnMinima(std::size_t blocks) : least(blocks, unmeasured()), second(blocks, unmeasured()) {}

  /// Takes over what was measured elsewhere.
  void merge(const ColumnMinima& other) {
    for (std::size_t block = 0; block < least.size(); ++block) {
      lower(block, other.least[block]);
      lower(block, other.second[block]);
    }
  }

  /// Takes in one distance for each feature of a block.
  void lower(std::size_t block, const Lanes<std::uint16_t>& distances) {
    for (std::size_t k = 0; k < blockSize; ++k) {
      const std::uint16_t larger = std::max(least[block].lane[k], distances.lane[k]);
      second[block].lane[k] = std::min(second[block].lane[k], larger);
      least[block].lane[k] = std::min(least[block].lane[k], distances.lane[k]);
    }
  }

  std::vector<Lanes<std::uint16_t>> least, second;

 private:
  static Lanes<std::uint16_t> unmeasured() {
    Lanes<std::uint16_t> lanes;
    std::fill_n(lanes.lane, blockSize, notMeasured);
    return lanes;
  }
};

}  // namespace MirelAlgorithms
