#include "ToolTest.h"

#include <MirelAlgorithms/geometry/Frustum.h>

namespace {

using MirelAlgorithms::Frustum;
using VoskBase::Mat4d;

/// A pose turned about z and then y, so that its elements are easy to write down in both forms.
struct Camera {
  double aboutZ, aboutY;
  cv::Vec3d position;

  Mat4d pose() const {
    const double c = std::cos(aboutZ), s = std::sin(aboutZ), d = std::cos(aboutY), t = std::sin(aboutY);
    const double elements[] = {c * d, s * d, -t, 0, -s,          c,           0,           0,
                               c * t, s * t, d,  0, position[0], position[1], position[2], 1};
    Mat4d m;
    for (int i = 0; i < 16; ++i) m[i] = elements[i];
    return m;
  }

  std::string matrixJson() const {
    std::string text = "{\"matrix\": [";
    for (int i = 0; i < 16; ++i) text += cv::format(i == 0 ? "%.17g" : ", %.17g", pose()[i]);
    return text + "]}";
  }

  /// The same by the quaternion (about z) * (about y).
  std::string quaternionJson() const {
    const double c = std::cos(aboutZ / 2), s = std::sin(aboutZ / 2), d = std::cos(aboutY / 2), t = std::sin(aboutY / 2);
    return cv::format(
        "{\"name\": \"q\", \"number\": 17, \"position\": [%.17g, %.17g, %.17g], "
        "\"quaternion_xyzw\": [%.17g, %.17g, %.17g, %.17g]}",
        position[0], position[1], position[2], -s * t, c * t, s * d, c * d);
  }
};

std::string poseFile(const std::vector<std::string>& poses) {
  std::string text = "{\"schema\": 1, \"poses\": [";
  for (const std::string& pose : poses) text += (&pose == poses.data() ? "" : ", ") + pose;
  return text + "]}";
}

class FrustumCommand : public ToolTest {
 protected:
  /// Three cameras that see much of each other's views, a fourth far away.
  const std::vector<Camera> cameras_ = {
      {0, 0, {0, 0, 0}}, {0.3, 0.4, {0.5, 0.1, 0}}, {-0.2, 2.8, {0.2, 0, -3}}, {0, 0.1, {90, 0, 0}}};

  void writeCameras() const {
    std::vector<std::string> poses;
    for (const Camera& camera : cameras_) poses.push_back(camera.matrixJson());
    write("poses.json", poseFile(poses));
  }
};

Mat4d halfTurned(Mat4d m) {
  for (const int i : {4, 5, 6, 8, 9, 10}) m[i] = -m[i];
  return m;
}

TEST_F(FrustumCommand, matricesAreThoseOfTheLibrary) {
  writeCameras();
  double sums[3] = {};
  for (const std::string look : {"", "-z", "+z"}) {
    const std::string arguments = "frustum poses.json --fov 50 --near 0.3 --far 4 --json --out out";
    const ToolResult result = run(arguments + (look.empty() ? "" : " --look " + look));
    ASSERT_EQ(result.status, 0) << result.errors;
    const nlohmann::json numbers = result.json();
    const auto rows = readCsv("out/overlaps.csv");
    ASSERT_EQ(rows.size(), 17u);
    for (int i = 0; i < 4; ++i) {
      for (int j = 0; j < 4; ++j) {
        const auto frustum = [&](int k, const char* turned) {
          const Mat4d pose = cameras_[k].pose();
          return Frustum(look == turned ? halfTurned(pose) : pose, 0.3, 4, 50 * 3.141592653589793 / 180, 1);
        };
        const bool overlap = Frustum::intersect(frustum(i, "+z"), frustum(j, "+z"));
        const double score = frustum(i, "-z").checkPose(frustum(j, "-z").pose);
        EXPECT_EQ(numbers["overlaps"][i][j], overlap) << i << " " << j << look;
        EXPECT_EQ(numbers["scores"][i][j], score) << i << " " << j << look;
        const std::vector<std::string>& row = rows[1 + 4 * i + j];
        EXPECT_EQ(row[0] + row[1] + row[2], std::to_string(i) + std::to_string(j) + (overlap ? "1" : "0"));
        EXPECT_EQ(std::stod(row[3]), score);
        if (i != j) sums[look.empty() ? 0 : look == "-z" ? 1 : 2] += score;
      }
    }
    EXPECT_EQ(numbers["pairs"], 6);
    EXPECT_EQ(numbers["groups"].back(), nlohmann::json{3});
    EXPECT_EQ(numbers["overlaps_look_along"], look == "+z" ? "+z" : "-z");
    EXPECT_EQ(numbers["scores_look_along"], look == "-z" ? "-z" : "+z");
  }
  EXPECT_GT(sums[0], 0);
  EXPECT_EQ(sums[0], sums[2]);
  EXPECT_NE(sums[0], sums[1]);
  EXPECT_EQ(files("out"), (std::set<std::string>{"frustum.png", "overlaps.csv", "report.html", "run.json"}));
}

TEST_F(FrustumCommand, aQuaternionIsTheSamePose) {
  const Camera camera = cameras_[1];
  write("poses.json", poseFile({camera.matrixJson(), camera.quaternionJson(), cameras_[0].matrixJson()}));
  const ToolResult result = run("frustum - --json <poses.json");
  ASSERT_EQ(result.status, 0) << result.errors;
  const nlohmann::json numbers = result.json();
  EXPECT_EQ(numbers["groups"], (nlohmann::json{{0, 17, 2}}));
  EXPECT_EQ(numbers["views"][1]["name"], "q");
  EXPECT_EQ(numbers["views"][0]["position_m"], numbers["views"][1]["position_m"]);
  EXPECT_NEAR(numbers["scores"][0][2], numbers["scores"][1][2], 1e-9);
  EXPECT_GT(numbers["scores"][0][2], 1);
}

TEST_F(FrustumCommand, viewsWithoutOverlapAreNoResult) {
  write("poses.json", poseFile({cameras_[0].matrixJson(), cameras_[3].matrixJson()}));
  const ToolResult result = run("frustum poses.json --json");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors, "mirel frustum: poses.json: no two of 2 views overlap\n");
  EXPECT_EQ(result.json()["overlapping_pairs"], 0);
  EXPECT_TRUE(exists("mirel-out/overlaps.csv"));
}

TEST_F(FrustumCommand, whatIsNoFileOfPosesIsRefused) {
  const std::string good = cameras_[0].matrixJson(), rotation = "\"quaternion_xyzw\": [0, 0, 0, 1]";
  const struct {
    std::string content, said;
  } cases[] = {
      {"", "bad.json: empty"},
      {"{\"schema\": 1,\n\"poses\": [{\"matrix\":\n [NaN]}]}", "bad.json:3: no valid JSON: invalid literal"},
      {"{\"schema\": 1, \"poses\": [1e999]}", "bad.json: no valid JSON: number overflow"},
      {"{\"schema\": 1, \"poses\": [", "bad.json:1: no valid JSON: unexpected end of input"},
      {"[]", "an object with \"schema\": 1"},
      {"{\"schema\": 2, \"poses\": []}", "an object with \"schema\": 1"},
      {"{\"schema\": 1}", "poses: a list of at least one pose"},
      {poseFile({}), "poses: a list of at least one pose"},
      {poseFile({good}), "poses: 1 pose, at least 2 expected"},
      {poseFile({good, "7"}), "poses[1]: number given, an object expected"},
      {poseFile({good, "{}"}), "poses[1]: no pose; matrix, or position"},
      {poseFile({good, "{" + rotation + "}"}), "poses[1]: no position"},
      {poseFile({good, "{\"position\": [0, 0, 0]}"}), "poses[1]: no quaternion_xyzw"},
      {poseFile({"{\"matrix\": [], " + rotation + "}"}), "poses[0]: both matrix and position"},
      {poseFile({"{\"matrix\": [1, 2, 3]}"}), "poses[0].matrix: 3 numbers given, 16 expected"},
      {poseFile({"{\"matrix\": 1}"}), "poses[0].matrix: number given, a list of 16"},
      {poseFile({"{\"position\": [0, \"a\", 0], " + rotation + "}"}), "poses[0].position[1]: string given"},
      {poseFile({"{\"position\": [0, 0, -1e10], " + rotation + "}"}), "poses[0].position[2]: -1e+10 given"},
      {poseFile({"{\"position\": [0, 0, 0], \"quaternion_xyzw\": [0, 0, 0, 2]}"}), "a quaternion of length 2"},
      {poseFile({"{\"matrix\": [1,0,0,5, 0,1,0,6, 0,0,1,7, 0,0,0,1]}"}), "elements 3, 7, 11, 15 are 5, 6, 7, 1"},
      {poseFile({"{\"matrix\": [2,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1]}"}), "axes of lengths 2, 1, 1"},
      {poseFile({"{\"matrix\": [-1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1]}"}), "a mirrored pose"},
      {poseFile({good, "{\"number\": 0}"}), "poses[1]: number 0 is that of poses[0], too"},
      {poseFile({"{\"number\": 1.5}"}), "poses[0].number: 1.5 given"},
      {poseFile({"{\"number\": 4294967296}"}), "poses[0].number: 4294967296 given"},
      {poseFile({"{\"name\": 3}"}), "poses[0].name: a text"},
      {poseFile({R"({"name": "a\nb"})"}), "poses[0].name: a text"}};
  for (const auto& [content, said] : cases) {
    write("bad.json", content);
    const ToolResult result = run("frustum bad.json");
    EXPECT_EQ(result.status, 2) << content;
    EXPECT_EQ(result.errorLines(), 1) << result.errors;
    EXPECT_NE(result.errors.find(said), std::string::npos) << result.errors;
    EXPECT_FALSE(exists("mirel-out")) << content;
  }
  writeCameras();
  for (const char* options : {"--fov 0", "--fov 180", "--fov nan", "--near 0", "--near 10", "--far 1e10", "--look z"}) {
    const ToolResult result = run(std::string("frustum poses.json ") + options);
    EXPECT_EQ(result.status, 2) << options;
    EXPECT_EQ(result.errorLines(), 1) << result.errors;
  }
}

}  // namespace
