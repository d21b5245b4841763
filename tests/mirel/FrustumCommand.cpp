#include "ToolTest.h"

#include <MirelAlgorithms/geometry/Frustum.h>

#include <Eigen/Geometry>

namespace {

using MirelAlgorithms::Frustum;
using VoskBase::Mat4d;

/// A pose turned about z and then y.
Eigen::Affine3d camera(double aboutZ, double aboutY, const Eigen::Vector3d& position) {
  return Eigen::Translation3d(position) * Eigen::AngleAxisd(aboutZ, Eigen::Vector3d::UnitZ()) *
         Eigen::AngleAxisd(aboutY, Eigen::Vector3d::UnitY());
}

std::string matrixJson(const Eigen::Affine3d& pose) {
  return nlohmann::json{{"matrix", std::vector<double>(pose.data(), pose.data() + 16)}}.dump();
}

class FrustumCommand : public ToolTest {
 protected:
  /// Three cameras that see much of each other's views, a fourth far away.
  const std::vector<Eigen::Affine3d> cameras_ = {camera(0, 0, {0, 0, 0}), camera(0.3, 0.4, {0.5, 0.1, 0}),
                                                 camera(-0.2, 2.8, {0.2, 0, -3}), camera(0, 0.1, {90, 0, 0})};

  FrustumCommand() {
    std::vector<std::string> poses;
    for (const Eigen::Affine3d& pose : cameras_) poses.push_back(matrixJson(pose));
    write("poses.json", poseFile(poses));
  }
};

/// For the library, where asked with the y and z axes turned round.
Mat4d matrix(const Eigen::Affine3d& pose, bool halfTurned) {
  Mat4d m;
  for (int i = 0; i < 16; ++i) m[i] = halfTurned && i / 4 % 3 > 0 ? -pose.data()[i] : pose.data()[i];
  return m;
}

TEST_F(FrustumCommand, matricesAreThoseOfTheLibrary) {
  std::map<std::string, double> sums;
  for (const std::string look : {"", "-z", "+z"}) {
    const nlohmann::json numbers =
        resultOf("frustum poses.json --fov 50 --near 0.3 --far 4 --out out" + (look.empty() ? "" : " --look " + look));
    const auto rows = readCsv("out/overlaps.csv");
    ASSERT_EQ(rows.size(), 17u);
    for (int i = 0; i < 4; ++i) {
      for (int j = 0; j < 4; ++j) {
        const auto frustum = [&](int k, const char* turned) {
          return Frustum(matrix(cameras_[k], look == turned), 0.3, 4, 50 * 3.141592653589793 / 180, 1);
        };
        const bool overlap = Frustum::intersect(frustum(i, "+z"), frustum(j, "+z"));
        const double score = frustum(i, "-z").checkPose(frustum(j, "-z").pose);
        EXPECT_EQ(numbers["overlaps"][i][j], overlap) << i << " " << j << look;
        EXPECT_EQ(numbers["scores"][i][j], score) << i << " " << j << look;
        const std::vector<std::string>& row = rows[1 + 4 * i + j];
        EXPECT_EQ(row[0] + row[1] + row[2], std::to_string(i) + std::to_string(j) + (overlap ? "1" : "0"));
        EXPECT_EQ(std::stod(row[3]), score);
        sums[look] += score;
      }
    }
    EXPECT_EQ(numbers["pairs"], 6);
    EXPECT_EQ(numbers["groups"].back(), nlohmann::json{3});
    EXPECT_EQ(numbers["overlaps_look_along"], look == "+z" ? "+z" : "-z");
    EXPECT_EQ(numbers["scores_look_along"], look == "-z" ? "-z" : "+z");
  }
  EXPECT_NE(sums["-z"], sums["+z"]) << "the axis makes no difference here";
  EXPECT_EQ(files("out"), (std::set<std::string>{"frustum.png", "overlaps.csv", "report.html", "run.json"}));
}

TEST_F(FrustumCommand, aQuaternionIsTheSamePose) {
  const Eigen::Quaterniond q(cameras_[1].rotation());
  const nlohmann::json same = {
      {"name", "q"}, {"number", 17}, {"position", {0.5, 0.1, 0}}, {"quaternion_xyzw", {q.x(), q.y(), q.z(), q.w()}}};
  write("poses.json", poseFile({matrixJson(cameras_[1]), same.dump(), matrixJson(cameras_[0])}));
  const nlohmann::json numbers = resultOf("frustum - <poses.json");
  EXPECT_EQ(numbers["groups"], (nlohmann::json{{0, 17, 2}}));
  EXPECT_EQ(numbers["views"][1]["name"], "q");
  EXPECT_EQ(numbers["views"][0]["position_m"], numbers["views"][1]["position_m"]);
  EXPECT_NEAR(numbers["scores"][0][2], numbers["scores"][1][2], 1e-9);
  EXPECT_GT(numbers["scores"][0][2], 1);
}

TEST_F(FrustumCommand, viewsWithoutOverlapAreNoResult) {
  write("poses.json", poseFile({matrixJson(cameras_[0]), matrixJson(cameras_[3])}));
  EXPECT_EQ(resultOfNothing("frustum poses.json", "poses.json: no two of 2 views overlap")["overlapping_pairs"], 0);
  EXPECT_TRUE(exists("mirel-out/overlaps.csv"));
}

TEST_F(FrustumCommand, wrongUsageIsRefused) {
  expectRefused("frustum", {{"", "no poses given"}});
  expectRefused("frustum poses.json", {{"--fov 0", "--fov: 0 given"},
                                       {"--fov 180", "--fov: 180 given"},
                                       {"--fov nan", "--fov: nan given"},
                                       {"--near 0", "--near, --far: 0 and"},
                                       {"--near 10 --far 10", "--near, --far: 10 and 10 given"},
                                       {"--far 1e10", "and 10000000000 given"},
                                       {"--look z", "--look: "}});
}

}  // namespace
