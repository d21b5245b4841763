#include <MirelAlgorithms/frame/internal/CpuVariant.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string_view>

#if defined(_MSC_VER)
#include <intrin.h>
#endif

namespace MirelAlgorithms {
namespace {

constexpr CpuVariant variants[] = {CpuVariant::baseline, CpuVariant::avx2, CpuVariant::avx512};

#if defined(__GNUC__)

CpuVariant widestOfMachine() {
  __builtin_cpu_init();
  if (!__builtin_cpu_supports("avx2")) return CpuVariant::baseline;
  const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                      __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
                      __builtin_cpu_supports("avx512vpopcntdq");
  return avx512 ? CpuVariant::avx512 : CpuVariant::avx2;
}

#else

// Bits of CPUID leaf 7, and of XCR0 for the register state that the operating system saves (Intel SDM, volume 1).
CpuVariant widestOfMachine() {
  int leaf[4];
  __cpuid(leaf, 1);
  const bool osSavesRegisters = (leaf[2] >> 27) & 1;
  if (!osSavesRegisters) return CpuVariant::baseline;
  const unsigned long long saved = _xgetbv(0);
  __cpuidex(leaf, 7, 0);
  const auto ebx = [&](int bit) { return ((leaf[1] >> bit) & 1) != 0; };
  const auto ecx = [&](int bit) { return ((leaf[2] >> bit) & 1) != 0; };
  if ((saved & 0x06) != 0x06 || !ebx(5)) return CpuVariant::baseline;
  const bool avx512 = (saved & 0xe6) == 0xe6 && ebx(16) && ebx(17) && ebx(30) && ebx(31) && ecx(14);
  return avx512 ? CpuVariant::avx512 : CpuVariant::avx2;
}

#endif

CpuVariant widestAllowed() {
  const char* wish = std::getenv("MIREL_CPU");
  const CpuVariant machine = widestOfMachine();
  if (wish)
    for (const CpuVariant variant : variants)
      if (std::string_view(wish) == name(variant)) return std::min(machine, variant);
  return machine;
}

std::atomic<CpuVariant>& current() {
  static std::atomic<CpuVariant> variant = widestAllowed();
  return variant;
}

}  // namespace

CpuVariant cpuVariant() noexcept { return current().load(std::memory_order_relaxed); }

void limitCpuVariant(CpuVariant widest) noexcept { current() = std::min(widest, widestAllowed()); }

const char* name(CpuVariant variant) noexcept {
  switch (variant) {
    case CpuVariant::avx512:
      return "avx512";
    case CpuVariant::avx2:
      return "avx2";
    default:
      return "baseline";
  }
}

}  // namespace MirelAlgorithms
