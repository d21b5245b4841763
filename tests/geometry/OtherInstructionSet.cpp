// A program compiled for AVX, where Eigen aligns matrices to 32 bytes instead of 16, gets the library's grid.
#include <gtest/gtest.h>

#include "LiteralGrid.h"
#include "RandomScan.h"

namespace {

TEST(OtherInstructionSet, sameGrid) {
#if defined(__GNUC__)
  if (!__builtin_cpu_supports("avx") || !__builtin_cpu_supports("fma")) GTEST_SKIP() << "no AVX here";
#endif
  static_assert(alignof(Eigen::Matrix4d) > 16);
  Scan scan = randomScan(60, 5000, true);  // coordinates so round that fused products are exact too
  for (auto& [number, pose] : scan.poses) pose.data()[3] = number % 4 * 0.25;
  Algorithms::VisibilityCheck check(0.5);
  LiteralGrid literal(0.5);
  check.updateGrid(scan.points, scan.poses, scan.sensors);
  literal.updateGrid(scan.points, scan.poses, scan.sensors);
  const auto& cells = check.getGrid().cells();
  ASSERT_EQ(cells.size(), literal.cells.size());
  EXPECT_GT(cells.size(), 0u);
  for (const auto& [key, element] : literal.cells) {
    ASSERT_TRUE(cells.count(key));
    EXPECT_EQ(cells.at(key).points, element.points);
    EXPECT_EQ(cells.at(key).rays, element.rays);
  }
  const auto best = check.getCurrentMax(), expected = literal.getCurrentMax();
  EXPECT_EQ(std::get<0>(best), std::get<0>(expected));
}

}  // namespace
