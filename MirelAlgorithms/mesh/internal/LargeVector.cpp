#include <MirelAlgorithms/mesh/internal/LargeVector.h>

#include <cstdint>
#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace MirelAlgorithms {

void preferHugePages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t bytes) {
#if defined(__linux__)
  constexpr std::size_t hugePage = std::size_t{1} << 21;
  if (bytes < 2 * hugePage) return;
  // Whole huge pages inside the block. A refusal changes nothing.
  const auto begin = (reinterpret_cast<std::uintptr_t>(memory) + hugePage - 1) & ~(hugePage - 1);
  const auto end = (reinterpret_cast<std::uintptr_t>(memory) + bytes) & ~(hugePage - 1);
  madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
#endif
}

}  // namespace MirelAlgorithms
