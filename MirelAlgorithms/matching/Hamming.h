/// Hamming distances of binary descriptors, scaled by a power of two.
#pragma once

#include <MirelAlgorithms/Export.h>

#include <cstdint>
#include <emmintrin.h>

namespace MirelAlgorithms {

MIREL_API unsigned short computeHammingDistance128(const __m128i* a, const __m128i* b, const unsigned int& shift);
MIREL_API unsigned short computeHammingDistance64(const std::uint64_t* a, const std::uint64_t* b,
                                                  const unsigned int& shift);
MIREL_API unsigned short computeHammingDistance(const std::uint64_t* a, const std::uint64_t* b,
                                                const unsigned int& words, const unsigned int& shift);

}  // namespace MirelAlgorithms
