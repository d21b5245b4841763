#include <MirelAlgorithms/features/internal/LatchPatches.h>
#include <smmintrin.h>

#include <algorithm>

#define MIREL_LATCH

namespace MirelAlgorithms {
namespace {

using Vector = __m128i;
constexpr int lanes = 8, rowsAtOnce = 1;

inline Vector zero() { return _mm_setzero_si128(); }
inline Vector sum(Vector a, Vector b) { return _mm_add_epi32(a, b); }

inline Vector load(const std::uint8_t* p) {
  return _mm_cvtepu8_epi16(_mm_loadl_epi64(reinterpret_cast<const Vector*>(p)));
}
inline Vector loadRow(const std::uint8_t* p) { return load(p); }
inline Vector loadRows(const std::uint8_t* p, std::ptrdiff_t) { return load(p); }

inline Vector leading(int n) {
  return _mm_cmpgt_epi16(_mm_set1_epi16(static_cast<short>(n)), _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7));
}
inline Vector leadingOfEight(int n) { return leading(n); }

inline Vector products(Vector a, Vector b, Vector c, Vector mask) {
  const Vector difference = _mm_and_si128(_mm_sub_epi16(a, c), mask);
  return _mm_madd_epi16(difference, _mm_sub_epi16(_mm_add_epi16(a, c), _mm_add_epi16(b, b)));
}

inline unsigned signs(const Vector (&v)[4]) {
  const Vector sums = _mm_hadd_epi32(_mm_hadd_epi32(v[3], v[2]), _mm_hadd_epi32(v[1], v[0]));
  return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(sums)));
}

#include <MirelAlgorithms/features/internal/LatchLoop.inl>

}  // namespace

LatchLoop latchLoopBaseline(int side) { return loopFor(side); }

}  // namespace MirelAlgorithms
