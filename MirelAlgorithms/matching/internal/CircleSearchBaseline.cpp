#include <MirelAlgorithms/matching/internal/CircleSearchLoops.h>

#include <smmintrin.h>
#include <algorithm>
#include <bit>
#include <numeric>

#define MIREL_SEARCH

namespace MirelAlgorithms {
namespace {

struct Distances {
  __m128i lower, upper;
};

inline __m128i lowerHalf(Distances d) { return d.lower; }
inline __m128i upperHalf(Distances d) { return d.upper; }

inline Distances everyLane(std::uint16_t value) {
  const __m128i v = _mm_set1_epi16(static_cast<short>(value));
  return {v, v};
}

inline Distances load(const Lanes<std::uint16_t>& lanes) {
  const __m128i* half = reinterpret_cast<const __m128i*>(lanes.lane);
  return {_mm_load_si128(half), _mm_load_si128(half + 1)};
}

inline void store(Lanes<std::uint16_t>& lanes, Distances d) {
  __m128i* half = reinterpret_cast<__m128i*>(lanes.lane);
  _mm_store_si128(half, d.lower);
  _mm_store_si128(half + 1, d.upper);
}

inline Distances lesser(Distances a, Distances b) {
  return {_mm_min_epu16(a.lower, b.lower), _mm_min_epu16(a.upper, b.upper)};
}

inline Distances larger(Distances a, Distances b) {
  return {_mm_max_epu16(a.lower, b.lower), _mm_max_epu16(a.upper, b.upper)};
}

inline Distances either(Distances a, Distances b) {
  return {_mm_or_si128(a.lower, b.lower), _mm_or_si128(a.upper, b.upper)};
}

inline Distances scaled(Distances d, unsigned shift) {
  const __m128i places = _mm_cvtsi32_si128(static_cast<int>(shift));
  return {_mm_sll_epi16(d.lower, places), _mm_sll_epi16(d.upper, places)};
}

inline std::uint32_t equalLanes(Distances d, std::uint16_t value) {
  const __m128i wanted = _mm_set1_epi16(static_cast<short>(value));
  const int low = _mm_movemask_epi8(_mm_cmpeq_epi16(d.lower, wanted));
  const int high = _mm_movemask_epi8(_mm_cmpeq_epi16(d.upper, wanted));
  return static_cast<std::uint32_t>(low) | static_cast<std::uint32_t>(high) << 16;
}

struct Circle {
  __m128 x, y, radiusSq;
};

inline Circle broadcast(const FBPrediction& p) {
  return {_mm_set1_ps(p.x), _mm_set1_ps(p.y), _mm_set1_ps(p.searchRadiusSq)};
}

// Not a number is not beyond.
inline __m128 beyond(const Circle& circle, __m128 dx, __m128 dy) {
  return _mm_cmpgt_ps(_mm_add_ps(_mm_mul_ps(dy, dy), _mm_mul_ps(dx, dx)), circle.radiusSq);
}

inline Distances outside(const Circle& circle, const Lanes<float>& x, const Lanes<float>& y) {
  __m128i quarter[4];
  for (int k = 0; k < 4; ++k) {
    const __m128 dx = _mm_sub_ps(circle.x, _mm_load_ps(x.lane + 4 * k));
    const __m128 dy = _mm_sub_ps(circle.y, _mm_load_ps(y.lane + 4 * k));
    quarter[k] = _mm_castps_si128(beyond(circle, dx, dy));
  }
  return {_mm_packs_epi32(quarter[0], quarter[1]), _mm_packs_epi32(quarter[2], quarter[3])};
}

// How far a coordinate is outside [least, most]. The maximum keeps its second operand when one is not a number.
inline __m128 gap(__m128 value, const float* least, const float* most) {
  const __m128 before = _mm_sub_ps(_mm_load_ps(least), value), after = _mm_sub_ps(value, _mm_load_ps(most));
  return _mm_max_ps(_mm_setzero_ps(), _mm_max_ps(before, after));
}

inline unsigned reaching(const Circle& circle, const BoxLanes& boxes) {
  unsigned bits = 0;
  for (int k = 0; k < 16; k += 4) {
    const __m128 dx = gap(circle.x, boxes.left.lane + k, boxes.right.lane + k);
    const __m128 dy = gap(circle.y, boxes.top.lane + k, boxes.bottom.lane + k);
    bits |= static_cast<unsigned>(_mm_movemask_ps(beyond(circle, dx, dy))) << k;
  }
  return ~bits & 0xffff;
}

template <int length>
inline Distances differingBits(const QueryWords<length>& query, const Lanes<std::uint64_t>* block) {
  Lanes<std::uint16_t> sums;
  for (std::size_t feature = 0; feature < blockSize; ++feature) {
    std::uint64_t bits = 0;
    for (std::size_t w = 0; w < query.size(); ++w)
      bits += static_cast<std::uint64_t>(std::popcount(block[w].lane[wordPlace(feature)] ^ query[w]));
    sums.lane[feature] = static_cast<std::uint16_t>(bits);
  }
  return load(sums);
}

#include <MirelAlgorithms/matching/internal/CircleSearchLoop.inl>

}  // namespace

CircleSearchLoop circleSearchBaseline(std::size_t words) { return loopFor(words); }

}  // namespace MirelAlgorithms
