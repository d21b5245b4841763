/// Instruction sets that inner loops are compiled for, chosen once at run time.
///
/// A loop that pays in a wider instruction set is written once as an always-inline function and compiled several times:
///
///     MIREL_ALWAYS_INLINE void scale(const int* in, float* out, int n, double factor) { ... }
///     static void scaleBaseline(...) { scale(...); }
///     MIREL_TARGET_AVX2 static void scaleAvx2(...) { scale(...); }
///
/// All variants give the same bits: integer work, or floating point without fused multiply-add.
#pragma once

namespace MirelAlgorithms {

/// Ordered: each set contains the ones before it.
enum class CpuVariant {
  baseline,  ///< x86-64-v2: SSE4.2, POPCNT
  avx2,      ///< and AVX2
  avx512,    ///< and AVX-512 F, BW, DQ, VL, VPOPCNTDQ
};

/// Widest variant of this machine, or a narrower one asked for by the environment variable MIREL_CPU
/// ("baseline", "avx2", "avx512") or by `limitCpuVariant`. Any number of threads.
CpuVariant cpuVariant() noexcept;

/// Uses no variant wider than `widest` from now on. For tests and benchmarks.
void limitCpuVariant(CpuVariant widest) noexcept;

/// "baseline", "avx2" or "avx512".
const char* name(CpuVariant variant) noexcept;

}  // namespace MirelAlgorithms

#if defined(__GNUC__) && defined(__x86_64__)
#define MIREL_ALWAYS_INLINE inline __attribute__((always_inline))
#define MIREL_TARGET_AVX2 __attribute__((target("avx2,popcnt")))
#define MIREL_TARGET_AVX512 __attribute__((target("avx2,popcnt,avx512f,avx512bw,avx512dq,avx512vl,avx512vpopcntdq")))
#elif defined(_MSC_VER)
#define MIREL_ALWAYS_INLINE __forceinline
#define MIREL_TARGET_AVX2
#define MIREL_TARGET_AVX512
#endif
