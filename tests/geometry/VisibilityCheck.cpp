#include <MirelAlgorithms/geometry/VisibilityCheck.h>
#include <gtest/gtest.h>

#include <limits>

#include "LiteralGrid.h"
#include "RandomScan.h"
#include "support/LogCapture.h"

using Algorithms::VisibilityCheck;
using Eigen::Vector3d;

namespace {

using Result = LiteralGrid::Result;

// In the order of the hash map too.
template <class Cells>
bool sameCells(const Cells& a, const decltype(LiteralGrid::cells)& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& x, const auto& y) {
    const auto& [points, rays, first, last, score] = x.second;
    return x.first == y.first && points == y.second.points && rays == y.second.rays && first == y.second.firstPose &&
           last == y.second.lastPose && score == y.second.score;
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
      ASSERT_TRUE(sameCells(check.getGrid().cells(), literal.cells)) << voxelSize << " round " << round;
      for (const auto& [key, element] : literal.cells) scores += element.score;
      VisibilityCheck copy(check), moved(std::move(copy));
      const std::vector<Result> results = allMaxima(moved);
      ASSERT_EQ(results, allMaxima(literal)) << voxelSize << " round " << round;
      maxima += results.size() - 1;
      EXPECT_EQ(results.back(), Result());
    }
    EXPECT_EQ(check.getGrid().cellSize(), voxelSize > 0.0 ? voxelSize : 0.25);
  }
  EXPECT_GT(scores, 500);
  EXPECT_GT(maxima, 20u);
}

// Points of voxel (0, 0, 0), seen from two poses.
Scan oneVoxel(int points, int firstPose, int lastPose) {
  Scan scan;
  scan.poses[firstPose] = scan.poses[lastPose] = Eigen::Matrix4d::Identity();
  for (int i = 0; i < points; ++i) scan.points.emplace_back(Vector3d(0.1, 0.1, 0.01 * i), i % 2 ? lastPose : firstPose);
  return scan;
}

TEST(VisibilityCheck, leastSupport) {
  using Limits = std::numeric_limits<int>;
  const struct {
    int points, firstPose, lastPose;
    std::size_t voxels;
  } cases[] = {{9, 0, 31, 0}, {10, 0, 31, 1}, {10, 0, 30, 0}, {10, (Limits::min)(), (Limits::max)(), 1}};
  for (const auto& [points, firstPose, lastPose, voxels] : cases) {
    VisibilityCheck check(0.25);
    update(check, oneVoxel(points, firstPose, lastPose));
    EXPECT_EQ(check.getGrid().cells().size(), voxels) << points << " points, last pose " << lastPose;
  }
}

TEST(VisibilityCheck, logsItsSteps) {
  const LogCapture log(1000);
  VisibilityCheck check(0.25);
  update(check, oneVoxel(10, 0, 31));
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
