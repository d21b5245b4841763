/// Hamming distances of binary descriptors, scaled by a power of two.
///
///     d = (sum over k of popcount(a[k] ^ b[k])) << shift,  low 16 bits
///
/// The shift puts descriptors of different lengths on one scale: 128, 256 and 512 bits with shifts 3, 2 and 1 all count
/// in 1/1024 of the descriptor. The whole sum is shifted, then truncated, not saturated: keep bits << shift under
/// 65536, the range of the result. A shift of 16 or more gives 0.
///
/// All three: no alignment needed, both pointers may be the same memory, no early exit, no allocation, no state; any
/// number of threads.
#pragma once

#include <MirelAlgorithms/Export.h>

#include <emmintrin.h>
#include <cstdint>

namespace MirelAlgorithms {

/// Distance of two 128-bit descriptors.
MIREL_API unsigned short computeHammingDistance128(const __m128i* a, const __m128i* b, const unsigned int& shift);

/// Distance of two 64-bit descriptors.
MIREL_API unsigned short computeHammingDistance64(const std::uint64_t* a, const std::uint64_t* b,
                                                  const unsigned int& shift);

/// Distance of two descriptors of any length.
///
/// @param a      first word of one descriptor, 64 bits per word
/// @param b      first word of the other
/// @param words  words per descriptor; 0 gives 0
/// @param shift  left shift of the whole sum, bits
MIREL_API unsigned short computeHammingDistance(const std::uint64_t* a, const std::uint64_t* b,
                                                const unsigned int& words, const unsigned int& shift);

}  // namespace MirelAlgorithms
