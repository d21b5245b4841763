#include "ToolTest.h"

#include <MirelAlgorithms/texture/TextureMatching.h>

namespace {

class TextureCommand : public ToolTest {
 protected:
  /// A large texture seen from `count` places: the picture moves by (-12, 7) px each time.
  void writeViews(int count) const {
    for (int i = 0; i < count; ++i) write("view" + std::to_string(i + 8) + ".png", texture(12 * i, -7 * i));
  }

  static nlohmann::json expectTestsInOrder(const nlohmann::json& pair) {
    EXPECT_GE(pair["features_1"], pair["after_ratio_test_1"]);
    EXPECT_GE(pair["features_2"], pair["after_ratio_test_2"]);
    EXPECT_GE(std::min(pair["after_ratio_test_1"], pair["after_ratio_test_2"]), pair["in_both_directions"]);
    EXPECT_GE(pair["in_both_directions"], pair["within_distance"]);
    EXPECT_GE(pair["within_distance"], pair["matches"]);
    return pair;
  }
};

TEST_F(TextureCommand, matchesAreThoseOfTheLibrary) {
  writeViews(2);
  const nlohmann::json numbers = resultOf("texture view8.png view9.png --out out");
  EXPECT_EQ(files("out"), (std::set<std::string>{"matches.csv", "matches.png", "report.html", "run.json"}));
  std::vector<cv::Vec2f> points1, points2;
  MirelAlgorithms::textureExtractAndMatch(texture(0, 0), texture(12, -7), points1, points2, {});
  ASSERT_GT(points1.size(), 50u);
  const auto rows = readCsv("out/matches.csv");
  ASSERT_EQ(rows.size(), points1.size() + 1);
  for (std::size_t i = 0; i < points1.size(); ++i) {
    const float expected[] = {points1[i][0], points1[i][1], points2[i][0], points2[i][1]};
    for (int k = 0; k < 4; ++k) EXPECT_EQ(std::stof(rows[i + 1][k]), expected[k]) << i;
  }
  const nlohmann::json pair = expectTestsInOrder(numbers["pairs"][0]);
  EXPECT_EQ(pair["matches"], points1.size());
}

TEST_F(TextureCommand, countsFollowTheSettingsOfTheTests) {
  writeViews(2);
  const auto pairWith = [this](const std::string& settings) {
    return resultOf("texture view8.png view9.png " + settings)["pairs"][0];
  };
  EXPECT_LT(pairWith("--set txmUniquenessRatio=0.3")["after_ratio_test_1"], pairWith("")["after_ratio_test_1"]);
  const nlohmann::json untested = expectTestsInOrder(pairWith("--set txmUniquenessRatio=0"));
  EXPECT_EQ(untested["after_ratio_test_1"], untested["features_1"]);
  EXPECT_GT(untested["in_both_directions"], pairWith("")["in_both_directions"]);
  EXPECT_GT(expectTestsInOrder(pairWith("--set txmORBWTA_K=4"))["matches"], 20);
}

TEST_F(TextureCommand, tableAndTracksOfManyAgree) {
  writeViews(3);
  write("view10.png", texture(24, -14)(cv::Rect(60, 40, 200, 180)));
  write("view11.png", texture(0, 0, 2));
  write("view12.png", cv::Mat(60, 90, CV_8U, cv::Scalar(128)));
  const nlohmann::json numbers = resultOf("texture 'view*.png' --pictures 2 --out out");
  EXPECT_EQ(files("out"), (std::set<std::string>{"matches_0002.png", "matches_0003.png", "multiplicity.png",
                                                 "report.html", "run.json", "table.csv", "table.png", "tracks.csv"}));
  const auto table = readCsv("out/table.csv"), tracks = readCsv("out/tracks.csv");
  ASSERT_EQ(table.size(), 6u);
  EXPECT_EQ(table[0],
            (std::vector<std::string>{"image", "view8.png", "view9.png", "view10.png", "view11.png", "view12.png"}));
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(numbers["table"][i][i], numbers["images"][i]["features"]);
    for (std::size_t j = 0; j < 5; ++j) {
      EXPECT_EQ(numbers["table"][i][j], std::stoi(table[i + 1][j + 1]));
      EXPECT_EQ(numbers["table"][i][j], numbers["table"][j][i]);
    }
  }
  for (const nlohmann::json& pair : numbers["pairs"])
    EXPECT_EQ(numbers["table"][pair["from"].get<int>() - 1][pair["to"].get<int>() - 1],
              expectTestsInOrder(pair)["matches"]);
  EXPECT_GT(numbers["table"][0][2], 50);
  EXPECT_EQ(numbers["table"][0][4], 0);
  EXPECT_EQ(tracks.size() - 1, numbers["tracks"]["count"]);
  int matches[4] = {};
  for (std::size_t i = 1; i < tracks.size(); ++i) {
    int images = 1;
    for (std::size_t j = 0; j < 4; ++j) {
      images += tracks[i][4 + j] == "1";
      matches[j] += tracks[i][4 + j] == "1";
    }
    EXPECT_EQ(std::stoi(tracks[i][2]), images);
  }
  for (std::size_t j = 0; j < 4; ++j) EXPECT_EQ(numbers["table"][0][j + 1], matches[j]);
}

TEST_F(TextureCommand, withoutMatchTheStatusIs1AndTheTestIsNamed) {
  writeViews(2);
  write("flat.png", cv::Mat(240, 320, CV_8U, cv::Scalar(90)));
  const Refusal cases[] = {
      {"view8.png flat.png", "and 0 features: nothing to compare"},
      {"view8.png view9.png --set txmMaxKeyDist=-3", " in both directions, 0 within 3 px"},
      {"view8.png flat.png flat.png", "it has no match with any of the 2 others"},
      {"view8.png view8.png view8.png --set txmMinMultipicity=4", "no feature of view8.png is found in 4 images or"}};
  for (const auto& [arguments, said] : cases) {
    resultOfNothing("texture --out out " + arguments, said);
    EXPECT_TRUE(exists("out/report.html"));
  }
}

TEST_F(TextureCommand, wrongUsageIsRefused) {
  writeViews(2);
  expectRefused("texture", {{"", "no images given"}, {"view8.png", "view8.png: one image given"}});
  expectRefused("texture view8.png view9.png --set", {{"txmCells=0", "view8.png: textureExtract: txmCells: 0 given"},
                                                      {"txmORBnLevels=0", "txmORBnLevels: 0 given"}});
#ifdef __linux__
  ::unsetenv("DISPLAY");
  ::unsetenv("QT_QPA_PLATFORM");
  expectRefused("texture view8.png view9.png --set", {{"txmDraw=0", "no display"}});
#endif
}

}  // namespace
