#include <MirelAlgorithms/matching/internal/ColumnPasses.h>

#include <emmintrin.h>

#include <cmath>

#define MIREL_PASS

namespace MirelAlgorithms {
namespace {

struct Rows {
  __m128d lower, upper;
};

inline Rows operator+(Rows a, Rows b) { return {_mm_add_pd(a.lower, b.lower), _mm_add_pd(a.upper, b.upper)}; }
inline Rows operator-(Rows a, Rows b) { return {_mm_sub_pd(a.lower, b.lower), _mm_sub_pd(a.upper, b.upper)}; }
inline Rows operator*(Rows a, Rows b) { return {_mm_mul_pd(a.lower, b.lower), _mm_mul_pd(a.upper, b.upper)}; }
inline Rows operator/(Rows a, Rows b) { return {_mm_div_pd(a.lower, b.lower), _mm_div_pd(a.upper, b.upper)}; }

inline Rows everyRow(double value) { return {_mm_set1_pd(value), _mm_set1_pd(value)}; }
inline Rows loadRows(const double* p) { return {_mm_loadu_pd(p), _mm_loadu_pd(p + 2)}; }
inline void store(double* p, Rows rows) {
  _mm_storeu_pd(p, rows.lower);
  _mm_storeu_pd(p + 2, rows.upper);
}

inline Rows positive(Rows rows) {
  return {_mm_max_pd(rows.lower, _mm_setzero_pd()), _mm_max_pd(rows.upper, _mm_setzero_pd())};
}

inline __m128d lowerPair(Rows rows) { return rows.lower; }
inline __m128d upperPair(Rows rows) { return rows.upper; }

#include <MirelAlgorithms/matching/internal/ColumnPasses.inl>

}  // namespace

const ColumnPasses& columnPassesBaseline() noexcept { return passes; }

}  // namespace MirelAlgorithms
