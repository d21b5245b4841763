#include <MirelAlgorithms/matching/internal/CircleSearchLoops.h>
#include <MirelAlgorithms/matching/internal/Distances256.h>

#include <algorithm>
#include <bit>
#include <numeric>

#define MIREL_SEARCH MIREL_TARGET_AVX512

#if defined(__GNUC__) && !defined(__clang__)
// The compiler takes the don't-care operand inside its own intrinsics for a mistake (GCC bug 105593).
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

namespace MirelAlgorithms {
namespace {

using namespace distances256;

struct Circle {
  __m512 x, y, radiusSq;
};

MIREL_SEARCH inline Circle broadcast(const FBPrediction& p) {
  return {_mm512_set1_ps(p.x), _mm512_set1_ps(p.y), _mm512_set1_ps(p.searchRadiusSq)};
}

// Not a number is not beyond.
MIREL_SEARCH inline __mmask16 beyond(const Circle& circle, __m512 dx, __m512 dy) {
  const __m512 distanceSq = _mm512_add_ps(_mm512_mul_ps(dy, dy), _mm512_mul_ps(dx, dx));
  return _mm512_cmp_ps_mask(distanceSq, circle.radiusSq, _CMP_GT_OQ);
}

MIREL_SEARCH inline Distances outside(const Circle& circle, const Lanes<float>& x, const Lanes<float>& y) {
  const __m512 dx = _mm512_sub_ps(circle.x, _mm512_load_ps(x.lane)),
               dy = _mm512_sub_ps(circle.y, _mm512_load_ps(y.lane));
  return _mm256_movm_epi16(beyond(circle, dx, dy));
}

// How far a coordinate is outside [least, most]. The maximum keeps its second operand when one is not a number.
MIREL_SEARCH inline __m512 gap(__m512 value, const Lanes<float>& least, const Lanes<float>& most) {
  const __m512 before = _mm512_sub_ps(_mm512_load_ps(least.lane), value);
  const __m512 after = _mm512_sub_ps(value, _mm512_load_ps(most.lane));
  return _mm512_max_ps(_mm512_setzero_ps(), _mm512_max_ps(before, after));
}

MIREL_SEARCH inline unsigned reaching(const Circle& circle, const BoxLanes& boxes) {
  const __m512 dx = gap(circle.x, boxes.left, boxes.right), dy = gap(circle.y, boxes.top, boxes.bottom);
  return static_cast<std::uint16_t>(~beyond(circle, dx, dy));
}

// 64-bit sums for the eight features in one half of the rows of words.
template <int length>
MIREL_SEARCH inline __m512i halfBits(const QueryWords<length>& query, const Lanes<std::uint64_t>* block,
                                     std::size_t half) {
  __m512i sums = _mm512_setzero_si512();
  for (std::size_t w = 0; w < query.size(); ++w) {
    const __m512i words = _mm512_load_si512(block[w].lane + 8 * half);
    const __m512i wanted = _mm512_set1_epi64(static_cast<long long>(query[w]));
    sums = _mm512_add_epi64(sums, _mm512_popcnt_epi64(_mm512_xor_si512(words, wanted)));
  }
  return sums;
}

template <int length>
MIREL_SEARCH inline Distances differingBits(const QueryWords<length>& query, const Lanes<std::uint64_t>* block) {
  const __m512i ab = halfBits(query, block, 0), cd = halfBits(query, block, 1);
  const __m512i both = _mm512_mask_blend_epi32(0xaaaa, ab, _mm512_slli_epi64(cd, 32));
  const __m256i ac = _mm512_castsi512_si256(both), bd = _mm512_extracti64x4_epi64(both, 1);
  return _mm256_blend_epi16(ac, _mm256_slli_epi64(bd, 16), 0xaa);
}

#include <MirelAlgorithms/matching/internal/CircleSearchLoop.inl>

}  // namespace

CircleSearchLoop circleSearchAvx512(std::size_t words) { return loopFor(words); }

}  // namespace MirelAlgorithms
