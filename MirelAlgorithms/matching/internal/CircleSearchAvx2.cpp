#include <MirelAlgorithms/matching/internal/CircleSearchLoops.h>
#include <MirelAlgorithms/matching/internal/Distances256.h>

#include <algorithm>
#include <bit>
#include <numeric>

#define MIREL_SEARCH MIREL_TARGET_AVX2

namespace MirelAlgorithms {
namespace {

using namespace distances256;

struct Circle {
  __m256 x, y, radiusSq;
};

MIREL_SEARCH inline Circle broadcast(const FBPrediction& p) {
  return {_mm256_set1_ps(p.x), _mm256_set1_ps(p.y), _mm256_set1_ps(p.searchRadiusSq)};
}

// Not a number is not beyond.
MIREL_SEARCH inline __m256 beyond(const Circle& circle, __m256 dx, __m256 dy) {
  const __m256 distanceSq = _mm256_add_ps(_mm256_mul_ps(dy, dy), _mm256_mul_ps(dx, dx));
  return _mm256_cmp_ps(distanceSq, circle.radiusSq, _CMP_GT_OQ);
}

MIREL_SEARCH inline __m256i outside(const Circle& circle, const float* x, const float* y) {
  const __m256 dx = _mm256_sub_ps(circle.x, _mm256_load_ps(x)), dy = _mm256_sub_ps(circle.y, _mm256_load_ps(y));
  return _mm256_castps_si256(beyond(circle, dx, dy));
}

MIREL_SEARCH inline Distances outside(const Circle& circle, const Lanes<float>& x, const Lanes<float>& y) {
  const __m256i lower = outside(circle, x.lane, y.lane), upper = outside(circle, x.lane + 8, y.lane + 8);
  return _mm256_permute4x64_epi64(_mm256_packs_epi32(lower, upper), 0xd8);  // packs works on halves of 128 bits
}

// How far a coordinate is outside [least, most]. The maximum keeps its second operand when one is not a number.
MIREL_SEARCH inline __m256 gap(__m256 value, const float* least, const float* most) {
  const __m256 before = _mm256_sub_ps(_mm256_load_ps(least), value);
  const __m256 after = _mm256_sub_ps(value, _mm256_load_ps(most));
  return _mm256_max_ps(_mm256_setzero_ps(), _mm256_max_ps(before, after));
}

MIREL_SEARCH inline unsigned reaching(const Circle& circle, const BoxLanes& boxes) {
  unsigned bits = 0;
  for (int k = 0; k < 16; k += 8) {
    const __m256 dx = gap(circle.x, boxes.left.lane + k, boxes.right.lane + k);
    const __m256 dy = gap(circle.y, boxes.top.lane + k, boxes.bottom.lane + k);
    bits |= static_cast<unsigned>(_mm256_movemask_ps(beyond(circle, dx, dy))) << k;
  }
  return ~bits & 0xffff;
}

// Bits of each byte: two look-ups of four bits (Mula, Kurz, Lemire, "Faster population counts using AVX2", 2018).
MIREL_SEARCH inline __m256i bitsOfBytes(__m256i v) {
  const __m256i bitsOfNibble = _mm256_setr_epi8(0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4,  //
                                                0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4);
  const __m256i nibble = _mm256_set1_epi8(15);
  const __m256i low = _mm256_shuffle_epi8(bitsOfNibble, _mm256_and_si256(v, nibble));
  const __m256i high = _mm256_shuffle_epi8(bitsOfNibble, _mm256_and_si256(_mm256_srli_epi16(v, 4), nibble));
  return _mm256_add_epi8(low, high);
}

// 64-bit sums for the four features in one quarter of the rows of words.
template <int length>
MIREL_SEARCH inline __m256i quarterBits(const QueryWords<length>& query, const Lanes<std::uint64_t>* block,
                                        std::size_t quarter) {
  constexpr std::size_t wordsPerByte = 31;  // at most 8 bits a word go into a byte of 255
  __m256i sums = _mm256_setzero_si256();
  for (std::size_t begin = 0; begin < query.size(); begin += wordsPerByte) {
    __m256i bytes = _mm256_setzero_si256();
    for (std::size_t w = begin; w < std::min(begin + wordsPerByte, query.size()); ++w) {
      const __m256i words = _mm256_load_si256(reinterpret_cast<const __m256i*>(block[w].lane) + quarter);
      const __m256i wanted = _mm256_set1_epi64x(static_cast<long long>(query[w]));
      bytes = _mm256_add_epi8(bytes, bitsOfBytes(_mm256_xor_si256(words, wanted)));
    }
    sums = _mm256_add_epi64(sums, _mm256_sad_epu8(bytes, _mm256_setzero_si256()));
  }
  return sums;
}

template <int length>
MIREL_SEARCH inline Distances differingBits(const QueryWords<length>& query, const Lanes<std::uint64_t>* block) {
  const __m256i a = quarterBits(query, block, 0), b = quarterBits(query, block, 1);
  const __m256i c = quarterBits(query, block, 2), d = quarterBits(query, block, 3);
  const __m256i ab = _mm256_blend_epi16(a, _mm256_slli_epi64(b, 16), 0x22);
  const __m256i cd = _mm256_blend_epi16(c, _mm256_slli_epi64(d, 16), 0x22);
  return _mm256_blend_epi32(ab, _mm256_slli_epi64(cd, 32), 0xaa);
}

#include <MirelAlgorithms/matching/internal/CircleSearchLoop.inl>

}  // namespace

CircleSearchLoop circleSearchAvx2(std::size_t words) { return loopFor(words); }

}  // namespace MirelAlgorithms
