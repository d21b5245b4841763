#include <MirelAlgorithms/features/internal/CellSelection.h>
#include <gtest/gtest.h>

#include <limits>

namespace MirelAlgorithms {
namespace {

using KeyPoints = std::vector<cv::KeyPoint>;
constexpr int huge = (std::numeric_limits<int>::max)();

cv::KeyPoint at(float x, float y, float response) { return {x, y, 15.0f, 0.0f, response}; }

TEST(SelectPerCell, belowTheThresholdUpToAThirdOfTheQuotaIsExceeded) {
  KeyPoints sorted;
  for (int i = 0; i < 20; ++i) sorted.push_back(at(5, 5, 1.0f - 0.01f * i));
  struct Row {
    int budget;
    double threshold;
    std::size_t taken;
  };
  for (const Row& row :
       {Row{7, 2.0, 3},  // counts 0, 1, 2 are at most 7 / 3
        Row{9, 2.0, 4}, Row{9, 0.945, 6}, Row{9, 0.0, 9}, Row{9, sorted[6].response, 7},  // equal is enough
        Row{0, 0.0, 0}, Row{-huge, 0.0, 0}})
    EXPECT_EQ(selectPerCell(sorted, {1, 100, 100}, row.budget, row.threshold).size(), row.taken) << row.budget;
}

TEST(SelectPerCell, cellsAreTakenInSinglePrecision) {
  const CellGrid grid{3, 90, 90};
  for (const float edge : {std::nextafter(30.0f, 0.0f), 30.0f}) {
    const KeyPoints sorted = {at(10, 10, 0.9f), at(10, edge, 0.8f)};
    const bool sameCell = static_cast<int>(3.0f * edge / 90.0f) == 0;
    EXPECT_EQ(selectPerCell(sorted, grid, 9, 0.0).size(), sameCell ? 1u : 2u);
  }
  // Below the last row of cells there is no cell; right of the last column begins the next row of cells.
  EXPECT_TRUE(selectPerCell({at(10, 95, 1.0f)}, grid, 9, 0.0).empty());
  EXPECT_EQ(selectPerCell({at(95, 10, 1.0f), at(10, 40, 0.5f)}, grid, 9, 0.0).size(), 1u);
}

TEST(SelectPerCell, hugeGridsAndBudgets) {
  const KeyPoints sorted = {at(10, 10, 0.9f), at(10.2f, 10, 0.8f)};
  EXPECT_TRUE(selectPerCell(sorted, {huge, 100, 100}, huge, 0.0).empty());
  EXPECT_EQ(selectPerCell(sorted, {46340, 100, 100}, huge, 0.0).size(), 2u);
  EXPECT_EQ(selectPerCell(sorted, {1, 100, 100}, huge, 0.0).size(), 2u);
  EXPECT_NEAR(automaticThreshold(sorted, {1, 100, 100}, 8ll * huge), 0.9, 1e-6);
}

TEST(AutomaticThreshold, isTheMeanOfTheStrongHalf) {
  // Budget 4: the mean of 8, 6, 4, 2 is 5; of those two that reach it are taken: 7.
  const KeyPoints sorted = {at(5, 5, 8), at(5, 6, 6), at(5, 7, 4), at(5, 8, 2), at(5, 9, 1)};
  EXPECT_EQ(automaticThreshold(sorted, {1, 100, 100}, 4), 7.0);
  EXPECT_EQ(automaticThreshold(sorted, {1, 100, 100}, 2), 8.0);
  EXPECT_EQ(automaticThreshold({at(5, 5, 3), at(5, 6, 3), at(5, 7, 3)}, {1, 100, 100}, 4), 3.0);  // equal is enough
}

}  // namespace
}  // namespace MirelAlgorithms
