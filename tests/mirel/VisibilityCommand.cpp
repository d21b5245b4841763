#include "ToolTest.h"

#include <MirelAlgorithms/geometry/VisibilityCheck.h>

#include <Eigen/Geometry>
#include <map>

namespace {

using Algorithms::VisibilityCheck;

/// Forty cameras in a ring that look inward and down at clusters of points, each point in its camera's frame.
class VisibilityCommand : public ToolTest {
 protected:
  VisibilityCommand() {
    cv::RNG random(5);
    std::vector<std::string> poses;
    std::string table = "pose,x_m,y_m,z_m\n";
    for (int i = 0; i < 40; ++i) {
      const int number = 100 - 2 * i;
      const double angle = 0.15 * i;
      Eigen::Affine3d pose(Eigen::Translation3d(3 + 2 * std::cos(angle), 1 + 2 * std::sin(angle), 1.5));
      pose.rotate(Eigen::AngleAxisd(angle, Eigen::Vector3d::UnitZ()));
      pose.rotate(Eigen::AngleAxisd(0.4, Eigen::Vector3d::UnitX()));
      poses_[number] = pose.matrix().transpose();  // position at elements 3, 7, 11 in memory
      const std::vector<double> columns(pose.data(), pose.data() + 16);
      poses.push_back(nlohmann::json{{"number", number}, {"matrix", columns}}.dump());
      for (int k = 0; k < 60; ++k) {
        const Eigen::Vector3d world(k % 3 == 0 ? 3.1 : 4.7, 1.1 + random.gaussian(0.001), 0.1 + random.gaussian(0.001));
        const Eigen::Vector3d p = pose.inverse(Eigen::Isometry) * world;
        points_.emplace_back(p, number);
        table += cv::format("%d,%.17g,%.17g,%.17g\n", number, p[0], p[1], p[2]);
      }
    }
    write("poses.json", poseFile(poses));
    write("points.csv", table);
  }

  VisibilityCheck::Points points_;
  std::map<int, Eigen::Matrix4d> poses_;
};

TEST_F(VisibilityCommand, voxelsAreThoseOfTheLibrary) {
  const std::vector<Eigen::Vector3d> sensors = {{0.1, 0, 0}, {-0.2, 0.1, 0}, {0, 0, 0.05}, {0, 0.3, 0}};
  VisibilityCheck check(0.2);
  check.updateGrid(points_, poses_, sensors);
  std::map<std::vector<int>, std::vector<int>> expected;
  for (const auto& [key, e] : check.getGrid().cells()) {
    expected[{key.x, key.y, key.z}] = {static_cast<int>(e.points.size()), static_cast<int>(e.rays.size()), e.firstPose,
                                       e.lastPose, e.score};
  }
  ASSERT_GE(expected.size(), 2u);
  const nlohmann::json numbers = resultOf(
      "visibility points.csv poses.json --voxel 0.2 --sensor 0.1,0,0 --sensor -0.2,0.1,0 --sensor 0,0,0.05 "
      "--sensor 0,0.3,0 --regions 9 --out out");
  const auto rows = readCsv("out/voxels.csv");
  ASSERT_EQ(rows.size(), expected.size() + 1);
  for (std::size_t i = 1; i < rows.size(); ++i) {
    std::vector<int> key, cells;
    for (int k = 0; k < 3; ++k) {
      key.push_back(std::stoi(rows[i][k]));
      EXPECT_NEAR(std::stod(rows[i][3 + k]), 0.2 * (key[k] + 0.5), 1e-12);
    }
    for (int k = 6; k < 11; ++k) cells.push_back(std::stoi(rows[i][k]));
    EXPECT_EQ(cells, expected[key]);
    EXPECT_TRUE(i == 1 || std::stoi(rows[i - 1][10]) >= cells[4]) << i;
  }
  const std::vector<std::vector<int>> clusters = {{15, 5, 0}, {23, 5, 0}};  // where the points were put
  ASSERT_EQ(numbers["regions"].size(), 2u);
  for (const nlohmann::json& region : numbers["regions"]) {
    const auto [inside, rays, first, last, score] = check.getCurrentMax();
    EXPECT_EQ(region["points"], inside.size());
    EXPECT_EQ(region["rays"], rays.size());
    EXPECT_EQ(region["score"], score);
    EXPECT_NE(std::find(clusters.begin(), clusters.end(), region["key"]), clusters.end()) << region;
  }
  EXPECT_EQ(numbers["points"], 2400);
  EXPECT_EQ(numbers["pose_span"], 78);
  EXPECT_EQ(numbers["voxels_kept"], expected.size());
  EXPECT_EQ(files("out"), (std::set<std::string>{"report.html", "run.json", "visibility.png", "voxels.csv"}));
}

TEST_F(VisibilityCommand, sensorsAndColumnsHaveDefaults) {
  nlohmann::json numbers = resultOf("visibility points.csv poses.json");
  numbers["points_file"] = "standard input";
  EXPECT_EQ(numbers, resultOf("visibility - poses.json --columns 2,y_m,4,pose --sensor 0,0,0 --sensor -0.1,0,0 "
                              "--sensor 0.1,0,0 --voxel 0.25 --regions 3 --threads 2 <points.csv"));
}

TEST_F(VisibilityCommand, withoutScoredVoxelThereIsNoResult) {
  write("one.json", poseFile({unitPose}));
  write("one.csv", "x,y,z,pose\n1,2,3,0\n");
  EXPECT_EQ(
      resultOfNothing("visibility one.csv one.json", "points in all: 1, numbers of all poses span 0")["voxels_kept"],
      0);
  EXPECT_EQ(readCsv("mirel-out/voxels.csv").size(), 1u);
}

TEST_F(VisibilityCommand, wrongUsageIsRefused) {
  expectRefused("visibility", {{"", "no points given"}, {"points.csv", "no poses given"}, {"- -", "only once"}});
  expectRefused("visibility points.csv poses.json",
                {{"--columns 1,2,3", "--columns: 3 columns given, 4 expected"},
                 {"--voxel 0", "--voxel: 0 given"},
                 {"--voxel nan", "--voxel: nan given"},
                 {"--voxel 1e-9", "--voxel: 1e-09 given, at least"},
                 {"--regions 0", "from 1 on"},
                 {"--sensor 0,0,0 --sensor 1,0,0", "2 sensor points given, at least 3"},
                 {"--sensor 0,0 --sensor 1,0,0 --sensor 0,1,0", "--sensor: '0,0' given"},
                 {"--sensor 0,0,inf --sensor 1,0,0 --sensor 0,1,0", "'0,0,inf' given"}});
}

}  // namespace
