#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/matching/internal/ColumnPasses.h>

namespace MirelAlgorithms {

const ColumnPasses& columnPasses() noexcept {
  return cpuVariant() >= CpuVariant::avx2 ? columnPassesAvx2() : columnPassesBaseline();
}

}  // namespace MirelAlgorithms
