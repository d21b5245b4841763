#include <MirelAlgorithms/geometry/VisibilityCheck.h>
#include <gtest/gtest.h>
#include <tbb/global_control.h>

#include <limits>
#include <thread>

#include "LiteralGrid.h"
#include "RandomScan.h"
#include "support/LogCapture.h"

using Algorithms::VisibilityCheck;
using Eigen::Vector3d;

namespace {

using Cell = std::pair<LiteralGrid::Key, LiteralGrid::Element>;
using Result = LiteralGrid::Result;

// In the order of the hash map.
template <class Cells>
std::vector<Cell> listed(const Cells& cells) {
  return {cells.begin(), cells.end()};
}

bool sameCells(const std::vector<Cell>& a, const std::vector<Cell>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const Cell& x, const Cell& y) {
    return x.first == y.first && x.second.points == y.second.points && x.second.rays == y.second.rays &&
           x.second.firstPose == y.second.firstPose && x.second.lastPose == y.second.lastPose &&
           x.second.score == y.second.score;
  });
}

void update(VisibilityCheck& check, const Scan& scan) { check.updateGrid(scan.points, scan.poses, scan.sensors); }

// Results until there is none left.
template <class Grid>
std::vector<Result> allMaxima(Grid& grid) {
  std::vector<Result> results;
  do results.push_back(grid.getCurrentMax());
  while (std::get<4>(results.back()) > 0 && results.size() < 100000);
  return results;
}

TEST(VisibilityCheck, agreesWithTheLiteralSteps) {
  const struct {
    double voxelSize;
    int points;
    bool snapped;
  } cases[] = {{0.25, 6000, false}, {0.1, 9000, false}, {0.5, 4000, false},   {0.25, 5000, true}, {1.0, 3000, true},
               {0.0, 4000, false},  {-1.0, 4000, true}, {0.03, 12000, false}, {7.0, 3000, false}};
  unsigned seed = 30;
  int scores = 0;
  std::size_t maxima = 0;
  for (const auto& [voxelSize, points, snapped] : cases) {
    VisibilityCheck check(voxelSize);
    LiteralGrid literal(voxelSize);
    for (int round = 0; round < 3; ++round) {  // the second grid is built in the place of the first
      Scan scan = randomScan(++seed, points / (round + 1), snapped);
      if (round == 2) scan.sensors.push_back({0.3, -0.5, 1.0});
      update(check, scan);
      literal.updateGrid(scan.points, scan.poses, scan.sensors);
      ASSERT_TRUE(sameCells(listed(check.getGrid().cells()), listed(literal.cells))) << voxelSize << " round " << round;
      for (const auto& [key, element] : literal.cells) scores += element.score;
      const std::vector<Result> results = allMaxima(check);
      ASSERT_EQ(results, allMaxima(literal)) << voxelSize << " round " << round;
      maxima += results.size() - 1;
      EXPECT_EQ(results.back(), Result());
    }
    EXPECT_EQ(check.getGrid().cellSize(), voxelSize > 0.0 ? voxelSize : 0.25);
  }
  EXPECT_GT(scores, 500);
  EXPECT_GT(maxima, 20u);
}

// Ten points of voxel (0, 0, 0) seen from poses 0 and `lastPose`.
Scan oneVoxel(int points, int lastPose) {
  Scan scan;
  scan.poses[0] = scan.poses[lastPose] = Eigen::Matrix4d::Identity();
  for (int i = 0; i < points; ++i) scan.points.emplace_back(Vector3d(0.1, 0.1, 0.01 * i), i % 2 ? lastPose : 0);
  return scan;
}

TEST(VisibilityCheck, leastSupport) {
  const struct {
    int points, lastPose;
    std::size_t voxels;
  } cases[] = {{9, 31, 0}, {10, 31, 1}, {10, 30, 0}, {10, std::numeric_limits<int>::max(), 1}};
  for (const auto& [points, lastPose, voxels] : cases) {
    VisibilityCheck check(0.25);
    update(check, oneVoxel(points, lastPose));
    EXPECT_EQ(check.getGrid().cells().size(), voxels) << points << " points, last pose " << lastPose;
  }
  VisibilityCheck check(0.25);
  Scan everyPose = oneVoxel(20, -1);
  everyPose.poses[std::numeric_limits<int>::min()] = everyPose.poses[std::numeric_limits<int>::max()] =
      Eigen::Matrix4d::Identity();
  everyPose.points[0].second = std::numeric_limits<int>::min();
  everyPose.points[1].second = std::numeric_limits<int>::max();
  update(check, everyPose);
  EXPECT_EQ(check.getGrid().cells().size(), 1u) << "a span beyond int";
}

TEST(VisibilityCheck, sameForAnyNumberOfThreads) {
  const Scan scan = randomScan(50, 8000), other = randomScan(51, 8000);
  VisibilityCheck one(0.3), two(0.3);
  {
    const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, 1);
    update(one, scan);
    update(two, other);
  }
  for (const std::size_t threads : {std::size_t{2}, std::size_t{8}}) {
    const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, threads);
    VisibilityCheck a(0.3), b(0.3);
    std::thread first([&] { update(a, scan); }), second([&] { update(b, other); });
    first.join(), second.join();
    EXPECT_TRUE(sameCells(listed(a.getGrid().cells()), listed(one.getGrid().cells()))) << threads;
    EXPECT_TRUE(sameCells(listed(b.getGrid().cells()), listed(two.getGrid().cells()))) << threads;
  }
}

TEST(VisibilityCheck, callersRandomNumbersGoOn) {
#if defined(__GLIBC__)
  std::srand(7);
  const int first = std::rand(), second = std::rand();
  std::srand(7);
  EXPECT_EQ(std::rand(), first);
  VisibilityCheck check(0.3);
  update(check, randomScan(52, 4000));
  ASSERT_FALSE(check.getGrid().cells().empty());
  EXPECT_EQ(std::rand(), second);
#endif
}

TEST(VisibilityCheck, copiesAndMoves) {
  const Scan scan = randomScan(56, 5000);
  VisibilityCheck check(0.3);
  update(check, scan);
  VisibilityCheck copy(check), assigned(9.0);
  assigned = check;
  const std::vector<Result> expected = allMaxima(check);
  ASSERT_GT(expected.size(), 1u);
  EXPECT_EQ(allMaxima(copy), expected);
  VisibilityCheck moved(std::move(assigned));
  EXPECT_EQ(allMaxima(moved), expected);
}

TEST(VisibilityCheck, logsItsSteps) {
  const LogCapture log(1000);
  VisibilityCheck check(0.25);
  update(check, oneVoxel(10, 31));
  std::vector<std::wstring> messages;
  for (const auto& record : log.of("Algorithms::VisibilityCheck::updateGrid")) {
    EXPECT_EQ(record.level, 1000);
    messages.push_back(record.message);
  }
  EXPECT_EQ(messages, (std::vector<std::wstring>{
                          L"First Loop Sucessful", L"First deleting loop: size before 1", L"size after 1",
                          L"Second Loop Sucessful", L"Size before deleting Loop 1",
                          L"Deleting voxels between the loop Sucessful", L"Size after Loop 1", L"Final Grid size 1"}));
  EXPECT_TRUE(std::any_of(log.records.begin(), log.records.end(), [](const MirelCore::LogRecord& record) {
    return record.message.find(L"update voxel grid") != std::wstring::npos;
  }));
}

}  // namespace
