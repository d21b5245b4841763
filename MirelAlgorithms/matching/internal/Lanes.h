/// Sixteen values side by side, one for each feature of a block.
#pragma once

#include <cstddef>
#include <cstdint>

namespace MirelAlgorithms {

inline constexpr std::size_t blockSize = 16;  ///< features per block

/// Aligned to its own size, up to a cache line, so that vector loads never straddle two lines.
template <class T>
struct alignas(blockSize * sizeof(T) < 64 ? blockSize * sizeof(T) : 64) Lanes {
  T lane[blockSize];
};

/// Stands for the distance of a pair that is not measured; no distance is larger.
inline constexpr std::uint16_t notMeasured = 65535;

}  // namespace MirelAlgorithms
