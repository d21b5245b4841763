#include <MirelAlgorithms/features/internal/LatchPatches.h>
#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <immintrin.h>

#include <algorithm>

#define MIREL_LATCH MIREL_TARGET_AVX2

namespace MirelAlgorithms {
namespace {

using Vector = __m256i;
constexpr int lanes = 16, rowsAtOnce = 2;

MIREL_LATCH inline Vector zero() { return _mm256_setzero_si256(); }
MIREL_LATCH inline Vector sum(Vector a, Vector b) { return _mm256_add_epi32(a, b); }

MIREL_LATCH inline __m128i eightPixels(const std::uint8_t* p) {
  return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
}
MIREL_LATCH inline Vector load(const std::uint8_t* p) {
  return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
}
MIREL_LATCH inline Vector loadRow(const std::uint8_t* p) { return _mm256_cvtepu8_epi16(eightPixels(p)); }
MIREL_LATCH inline Vector loadRows(const std::uint8_t* p, std::ptrdiff_t step) {
  return _mm256_cvtepu8_epi16(_mm_unpacklo_epi64(eightPixels(p), eightPixels(p + step)));
}

MIREL_LATCH inline Vector leading(int n) {
  const Vector index = _mm256_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
  return _mm256_cmpgt_epi16(_mm256_set1_epi16(static_cast<short>(n)), index);
}
MIREL_LATCH inline Vector leadingOfEight(int n) {
  const Vector mask = leading(n);
  return _mm256_permute2x128_si256(mask, mask, 0);
}

MIREL_LATCH inline Vector products(Vector a, Vector b, Vector c, Vector mask) {
  const Vector difference = _mm256_and_si256(_mm256_sub_epi16(a, c), mask);
  return _mm256_madd_epi16(difference, _mm256_sub_epi16(_mm256_add_epi16(a, c), _mm256_add_epi16(b, b)));
}

MIREL_LATCH inline unsigned signs(const Vector (&v)[4]) {
  const Vector halves = _mm256_hadd_epi32(_mm256_hadd_epi32(v[3], v[2]), _mm256_hadd_epi32(v[1], v[0]));
  const __m128i sums = _mm_add_epi32(_mm256_castsi256_si128(halves), _mm256_extracti128_si256(halves, 1));
  return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(sums)));
}

#include <MirelAlgorithms/features/internal/LatchLoop.inl>

}  // namespace

LatchLoop latchLoopAvx2(int side) { return loopFor(side); }

}  // namespace MirelAlgorithms
