#include <MirelAlgorithms/matching/internal/BackwardPass.h>
#include <gtest/gtest.h>

#include <limits>

using namespace MirelAlgorithms;

namespace {

TEST(BackwardPass, BlockingDistance) {
  struct Row {
    std::uint16_t best;
    float ratio;
    std::uint16_t blocking;
  };
  for (const Row& row : {Row{100, 0.8f, 125},                            // 124.999998 in double precision
                         Row{120, 0.8f, 150},                            //
                         Row{99, 0.8f, 123},                             // 123.75
                         Row{100, -0.8f, 65411},                         // -125
                         Row{1, 1e-5f, 34464},                           // 100000 - 65536
                         Row{1, 1 / 65535.0f, 65535}, Row{64, 0.0f, 0},  // infinite
                         Row{0, 0.0f, 0},                                // not a number
                         Row{65535, 1e-9f, 0},                           // beyond 2^31
                         Row{7, std::numeric_limits<float>::infinity(), 0}})
    EXPECT_EQ(blockingDistance(row.best, row.ratio), row.blocking) << row.best << " / " << row.ratio;
}

}  // namespace
