/// Sixteen 16-bit distances in one 256-bit vector.
#pragma once

#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/matching/internal/Lanes.h>

#include <immintrin.h>

namespace MirelAlgorithms::distances256 {

using Distances = __m256i;

MIREL_TARGET_AVX2 inline __m128i lowerHalf(Distances d) { return _mm256_castsi256_si128(d); }
MIREL_TARGET_AVX2 inline __m128i upperHalf(Distances d) { return _mm256_extracti128_si256(d, 1); }

MIREL_TARGET_AVX2 inline Distances everyLane(std::uint16_t value) {
  return _mm256_set1_epi16(static_cast<short>(value));
}

MIREL_TARGET_AVX2 inline Distances load(const Lanes<std::uint16_t>& lanes) {
  return _mm256_load_si256(reinterpret_cast<const __m256i*>(lanes.lane));
}

MIREL_TARGET_AVX2 inline void store(Lanes<std::uint16_t>& lanes, Distances d) {
  _mm256_store_si256(reinterpret_cast<__m256i*>(lanes.lane), d);
}

MIREL_TARGET_AVX2 inline Distances lesser(Distances a, Distances b) { return _mm256_min_epu16(a, b); }
MIREL_TARGET_AVX2 inline Distances larger(Distances a, Distances b) { return _mm256_max_epu16(a, b); }
MIREL_TARGET_AVX2 inline Distances either(Distances a, Distances b) { return _mm256_or_si256(a, b); }

MIREL_TARGET_AVX2 inline Distances scaled(Distances d, unsigned shift) {
  return _mm256_sll_epi16(d, _mm_cvtsi32_si128(static_cast<int>(shift)));
}

/// Bits 2k and 2k + 1: lane k has the value.
MIREL_TARGET_AVX2 inline std::uint32_t equalLanes(Distances d, std::uint16_t value) {
  return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi16(d, everyLane(value))));
}

}  // namespace MirelAlgorithms::distances256
