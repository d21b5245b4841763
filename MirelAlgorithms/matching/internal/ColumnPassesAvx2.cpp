#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/matching/internal/ColumnPasses.h>

#include <immintrin.h>

#include <cmath>

#define MIREL_PASS MIREL_TARGET_AVX2

namespace MirelAlgorithms {
namespace {

struct Rows {
  __m256d all;
};

MIREL_PASS inline Rows operator+(Rows a, Rows b) { return {_mm256_add_pd(a.all, b.all)}; }
MIREL_PASS inline Rows operator-(Rows a, Rows b) { return {_mm256_sub_pd(a.all, b.all)}; }
MIREL_PASS inline Rows operator*(Rows a, Rows b) { return {_mm256_mul_pd(a.all, b.all)}; }
MIREL_PASS inline Rows operator/(Rows a, Rows b) { return {_mm256_div_pd(a.all, b.all)}; }

MIREL_PASS inline Rows everyRow(double value) { return {_mm256_set1_pd(value)}; }
MIREL_PASS inline Rows loadRows(const double* p) { return {_mm256_loadu_pd(p)}; }
MIREL_PASS inline void store(double* p, Rows rows) { _mm256_storeu_pd(p, rows.all); }

MIREL_PASS inline Rows positive(Rows rows) { return {_mm256_max_pd(rows.all, _mm256_setzero_pd())}; }

MIREL_PASS inline __m128d lowerPair(Rows rows) { return _mm256_castpd256_pd128(rows.all); }
MIREL_PASS inline __m128d upperPair(Rows rows) { return _mm256_extractf128_pd(rows.all, 1); }

#include <MirelAlgorithms/matching/internal/ColumnPasses.inl>

}  // namespace

const ColumnPasses& columnPassesAvx2() noexcept { return passes; }

}  // namespace MirelAlgorithms
