#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <fstream>
#include <set>

#include "Capabilities.h"

namespace MirelAlgorithms {
namespace {

/// Bytes of this process in memory, without what the allocator could give back.
long residentBytes() {
  malloc_trim(0);
  long all = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> all >> resident;
  return resident * sysconf(_SC_PAGESIZE);
}

class MemoryGrowth : public testing::TestWithParam<Capability> {};

// What OpenCV takes long for.
const std::set<std::string> slow = {"features_brisk", "features_mser", "descriptors_brisk", "descriptors_freak",
                                    "smoothing_neighbours"};

TEST_P(MemoryGrowth, IsBounded) {
  constexpr long most = 1 << 20;
  const int calls = slow.count(GetParam().name) ? 200 : 2000;
  long early = 0;
  for (int call = 1; call <= calls; ++call) {
    GetParam().run(Inputs::small());
    if (call == calls / 10) early = residentBytes();
  }
  ASSERT_GT(early, 0);
  EXPECT_LE(residentBytes() - early, most);
}

INSTANTIATE_TEST_SUITE_P(Of, MemoryGrowth, testing::ValuesIn(capabilities()),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace MirelAlgorithms
