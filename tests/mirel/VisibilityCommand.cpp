#include "ToolTest.h"

#include <MirelAlgorithms/geometry/VisibilityCheck.h>

#include <map>

namespace {

using Algorithms::VisibilityCheck;

/// Forty cameras in a ring that look inward and down at clusters of points, each point in its camera's frame.
class VisibilityCommand : public ToolTest {
 protected:
  VisibilityCommand() {
    cv::RNG random(5);
    std::string poses, table = "pose,x_m,y_m,z_m\n";
    for (int i = 0; i < 40; ++i) {
      const int number = 100 - 2 * i;
      const cv::Matx33d axes = axesOf(i);  // columns
      const cv::Vec3d position(3 + 2 * std::cos(0.15 * i), 1 + 2 * std::sin(0.15 * i), 1.5);
      Eigen::Matrix4d rows;  // position at elements 3, 7, 11 in memory
      std::string matrix;
      for (int k = 0; k < 16; ++k) {
        const int row = k / 4, column = k % 4;
        rows.data()[k] = row == 3 ? column == 3 : column == 3 ? position[row] : axes(row, column);
        const double other = column == 3 ? row == 3 : row == 3 ? position[column] : axes(column, row);
        matrix += cv::format(k == 0 ? "%.17g" : ", %.17g", other);
      }
      poses_[number] = rows;
      poses += cv::format("%s{\"number\": %d, \"matrix\": [", i == 0 ? "" : ",\n", number) + matrix + "]}";
      for (int k = 0; k < 60; ++k) {
        const cv::Vec3d world(k % 3 == 0 ? 3.1 : 4.7, 1.1 + random.gaussian(0.001), 0.1 + random.gaussian(0.001));
        const cv::Vec3d p = axes.t() * (world - position);
        points_.emplace_back(Eigen::Vector3d(p[0], p[1], p[2]), number);
        table += cv::format("%d,%.17g,%.17g,%.17g\n", number, p[0], p[1], p[2]);
      }
    }
    write("poses.json", "{\"schema\": 1, \"poses\": [" + poses + "]}");
    write("points.csv", table);
  }

  static cv::Matx33d axesOf(int i) {
    const double a = 0.15 * i, b = 0.4;
    const cv::Matx33d aboutZ(std::cos(a), -std::sin(a), 0, std::sin(a), std::cos(a), 0, 0, 0, 1);
    return aboutZ * cv::Matx33d(1, 0, 0, 0, std::cos(b), -std::sin(b), 0, std::sin(b), std::cos(b));
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
  const ToolResult result =
      run("visibility points.csv poses.json --voxel 0.2 --sensor 0.1,0,0 --sensor -0.2,0.1,0 --sensor 0,0,0.05 "
          "--sensor 0,0.3,0 --regions 9 --json --out out");
  ASSERT_EQ(result.status, 0) << result.errors;
  const auto rows = readCsv("out/voxels.csv");
  ASSERT_EQ(rows.size(), expected.size() + 1);
  for (std::size_t i = 1; i < rows.size(); ++i) {
    std::vector<int> key, numbers;
    for (int k = 0; k < 3; ++k) {
      key.push_back(std::stoi(rows[i][k]));
      EXPECT_NEAR(std::stod(rows[i][3 + k]), 0.2 * (key[k] + 0.5), 1e-12);
    }
    for (int k = 6; k < 11; ++k) numbers.push_back(std::stoi(rows[i][k]));
    EXPECT_EQ(numbers, expected[key]);
    EXPECT_TRUE(i == 1 || std::stoi(rows[i - 1][10]) >= numbers[4]) << i;
  }
  const nlohmann::json numbers = result.json();
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
  const ToolResult plain = run("visibility points.csv poses.json --json");
  const ToolResult spelled =
      run("visibility - poses.json --columns 2,y_m,4,pose --sensor 0,0,0 --sensor -0.1,0,0 --sensor 0.1,0,0 --json "
          "--voxel 0.25 --regions 3 --threads 2 <points.csv");
  ASSERT_EQ(plain.status, 0) << plain.errors;
  nlohmann::json numbers = plain.json();
  numbers["points_file"] = "standard input";
  EXPECT_EQ(numbers, spelled.json()) << spelled.errors;
}

TEST_F(VisibilityCommand, withoutScoredVoxelThereIsNoResult) {
  write("one.json", "{\"schema\": 1, \"poses\": [{\"position\": [0, 0, 0], \"quaternion_xyzw\": [0, 0, 0, 1]}]}");
  write("one.csv", "x,y,z,pose\n1,2,3,0\n");
  const ToolResult result = run("visibility one.csv one.json --json");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errorLines(), 1) << result.errors;
  EXPECT_NE(result.errors.find("points in all: 1, numbers of all poses span 0"), std::string::npos) << result.errors;
  EXPECT_EQ(result.json()["voxels_kept"], 0);
  EXPECT_EQ(readCsv("mirel-out/voxels.csv").size(), 1u);
}

TEST_F(VisibilityCommand, whatCannotBeUsedIsRefused) {
  write("nan.csv", "x,y,z,pose\n1,2,3,100\n1,nan,3,100\n");
  write("unknown.csv", "x,y,z,pose\n1,2,3,100\n1,2,3,99\n");
  write("half.csv", "x,y,z,pose\n1,2,3,100.5\n");
  write("far.csv", "x,y,z,pose\n1,2e9,3,100\n");
  write("cells.csv", "x,y,z,pose\n1,2,3\n");
  write("heads.csv", "x,y,z,when\n1,2,3,4\n");
  write("bare.csv", "1,2,3,100\n");
  write("empty.csv", "x,y,z,pose\n");
  write("bad.json", "{\"schema\": 1, \"poses\": [{}]}");
  const struct {
    const char *arguments, *said;
  } cases[] = {{"", "no points given"},
               {"points.csv", "no poses given"},
               {"- -", "only once"},
               {"nan.csv poses.json", "nan.csv:3: column 2 (y): 'nan' given"},
               {"unknown.csv poses.json", "unknown.csv:3: column 4 (pose): poses.json has no pose with the number 99"},
               {"half.csv poses.json", "half.csv:2: column 4 (pose): 100.5 given"},
               {"far.csv poses.json", "far.csv:2: column 2 (y): 2e+09 given"},
               {"cells.csv poses.json", "cells.csv:2: 3 cells, 4 expected"},
               {"heads.csv poses.json", "heads.csv:1: no column pose"},
               {"bare.csv poses.json", "no heads; --columns expected"},
               {"empty.csv poses.json", "empty.csv: no row"},
               {"points.csv bad.json", "bad.json: poses[0]: no pose"},
               {"points.csv missing.json", "missing.json: no such file"},
               {"points.csv poses.json --columns 1,2,3", "--columns: 3 columns given, 4 expected"},
               {"points.csv poses.json --voxel 0", "--voxel: 0 given"},
               {"points.csv poses.json --voxel -1", "--voxel: -1 given"},
               {"points.csv poses.json --voxel nan", "--voxel: nan given"},
               {"points.csv poses.json --voxel 1e-9", "--voxel: 1e-09 given, at least"},
               {"points.csv poses.json --regions 0", "from 1 on"},
               {"points.csv poses.json --sensor 0,0,0 --sensor 1,0,0", "2 sensor points given, at least 3"},
               {"points.csv poses.json --sensor 0,0 --sensor 1,0,0 --sensor 0,1,0", "--sensor: '0,0' given"},
               {"points.csv poses.json --sensor 0,0,inf --sensor 1,0,0 --sensor 0,1,0", "'0,0,inf' given"}};
  for (const auto& [arguments, said] : cases) {
    const ToolResult result = run(std::string("visibility ") + arguments);
    EXPECT_EQ(result.status, 2) << arguments;
    EXPECT_EQ(result.errorLines(), 1) << result.errors;
    EXPECT_NE(result.errors.find(said), std::string::npos) << result.errors;
    EXPECT_FALSE(exists("mirel-out")) << arguments;
  }
}

}  // namespace
