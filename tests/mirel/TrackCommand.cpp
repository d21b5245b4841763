#include "ToolTest.h"

#include <cmath>
#include <opencv2/videoio.hpp>
#include <regex>

namespace {

class TrackCommand : public ToolTest {
 protected:
  /// Frames of a camera that sees the texture from (2i, -i): the picture moves by (-2, 1) px.
  void writeFrames(int count) {
    for (int i = 0; i < count; ++i) write("frame" + std::to_string(i + 8) + ".png", texture(2 * i, -i));
  }
};

TEST_F(TrackCommand, filesAndNumbersAgree) {
  writeFrames(3);
  writePrecious({"out/matches_0001.png", "out/matches_0009.png", "out/matches_mine.png"});
  const nlohmann::json numbers = resultOf("track frame8.png frame9.png frame10.png --out out");
  EXPECT_EQ(numbers, readJson("out/motion.json"));
  EXPECT_EQ(numbers["matched_pairs"], 2);
  EXPECT_EQ(numbers["longest_track_frames"], 3);
  EXPECT_NE(read("out/matches_0001.png"), "precious");
  EXPECT_EQ(files("out"),
            (std::set<std::string>{"features.csv", "matches.csv", "matches_0001.png", "matches_0002.png",
                                   "matches_mine.png", "motion.json", "report.html", "run.json", "tracks.png"}));
  const auto features = readCsv("out/features.csv"), matches = readCsv("out/matches.csv");
  std::map<std::string, int> featuresOf, matchesOf, inliersOf;
  for (std::size_t i = 1; i < features.size(); ++i) ++featuresOf[features[i][0]];
  for (std::size_t i = 1; i < matches.size(); ++i) {
    ++matchesOf[matches[i][0]];
    inliersOf[matches[i][0]] += matches[i].back() == "1";
    EXPECT_LE(std::stoi(matches[i][7]), 133);  // of mode narrow
  }
  for (const int i : {0, 1}) {
    const nlohmann::json& pair = numbers["pairs"][i];
    const std::string number = std::to_string(i + 1);
    EXPECT_EQ(pair["features_1"], featuresOf[number]);
    EXPECT_EQ(pair["matches"], matchesOf[number]);
    EXPECT_EQ(pair["inliers"], inliersOf[number]);
    EXPECT_GE(pair["in_circle"], pair["in_distance"]);
    EXPECT_GE(pair["in_distance"], pair["after_ratio_test"]);
    EXPECT_GE(pair["after_ratio_test"], pair["after_backward_test"]);
    EXPECT_NEAR(pair["motion"]["dx_px"], -2, 0.1);
    EXPECT_NEAR(pair["motion"]["dy_px"], 1, 0.1);
    EXPECT_NEAR(pair["motion"]["rotation_deg"], 0, 0.1);
    EXPECT_NEAR(pair["motion"]["scale"], 1, 0.002);
  }
}

TEST_F(TrackCommand, framesOfAnySizeInModeExhaustive) {
  write("a.png", texture(0, 0)(cv::Rect(60, 40, 200, 180)));
  write("b.png", texture(0, 0));
  for (const std::string frames : {"a.png b.png", "b.png a.png"}) {
    const nlohmann::json numbers = resultOf("track --mode exhaustive " + frames), pair = numbers["pairs"][0];
    EXPECT_NE(numbers["frames"][0]["width_px"], numbers["frames"][1]["width_px"]);
    EXPECT_GT(pair["inliers"], 50) << frames;
    EXPECT_EQ(pair["after_backward_test"], pair["matches"]) << "without refinement the last test leaves the matches";
  }
}

TEST_F(TrackCommand, rotationAndScaleAreThoseOfThePicture) {
  const cv::Mat from = texture(0, 0);
  cv::Mat to;
  // 3 degrees from the x axis to the y axis; OpenCV's sign is the other one.
  cv::warpAffine(from, to, cv::getRotationMatrix2D({159.5f, 119.5f}, -3, 1.05), from.size(), cv::INTER_CUBIC,
                 cv::BORDER_REFLECT);
  write("from.png", from);
  write("to.png", to);
  const nlohmann::json motion = resultOf("track from.png to.png --mode wide")["pairs"][0]["motion"];
  EXPECT_NEAR(motion["rotation_deg"], 3, 0.2);
  EXPECT_NEAR(motion["scale"], 1.05, 0.005);
  EXPECT_NEAR(motion["shift_px"], 0, 0.5);
}

TEST_F(TrackCommand, patternsSequencesAndListsAreTheSame) {
  writeFrames(4);  // 8, 9, 10, 11
  const nlohmann::json list = resultOf("track frame8.png frame9.png frame10.png frame11.png");
  EXPECT_EQ(resultOf("track 'frame*.png'"), list);
  EXPECT_EQ(resultOf("track frame%d.png"), list);
  const nlohmann::json frames = resultOf("track 'frame*.png' --every 2")["frames"];
  ASSERT_EQ(frames.size(), 2u);
  EXPECT_EQ(frames[1]["name"], "frame10.png");
}

TEST_F(TrackCommand, videosAreReadFrameAfterFrame) {
  cv::VideoWriter video("v.avi", cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), 10, {320, 240}, false);
  if (!video.isOpened()) GTEST_SKIP() << "this OpenCV writes no video";
  for (int i = 0; i < 9; ++i) video.write(texture(2 * i, -i));
  video.release();
  const nlohmann::json numbers = resultOf("track v.avi --every 2 --max-frames 4 --pictures 1 --out out");
  std::vector<std::string> names;
  for (const auto& frame : numbers["frames"]) names.push_back(frame["name"]);
  EXPECT_EQ(names, (std::vector<std::string>{"v.avi #1", "v.avi #3", "v.avi #5", "v.avi #7"}));
  for (const auto& pair : numbers["pairs"]) EXPECT_NEAR(pair["motion"]["dx_px"], -4, 0.2);
  EXPECT_TRUE(exists("out/matches_0001.png"));
  EXPECT_FALSE(exists("out/matches_0002.png"));
}

TEST_F(TrackCommand, predictionFollowsACameraOutOfTheCircles) {
  const cv::Mat scene = texture(0, 0, 1, {1000, 240});
  const std::vector<int> steps = {80, 95, 110, 125, 140};  // px; the circles have 120
  for (int i = 0, x = 0; i <= 5; x += i < 5 ? steps[i] : 0, ++i)
    write("pan" + std::to_string(i) + ".png", scene(cv::Rect(x, 0, 320, 240)));
  const nlohmann::json with = resultOf("track 'pan*.png'");
  const nlohmann::json without = resultOf("track 'pan*.png' --no-prediction");
  EXPECT_FALSE(without.contains("prediction"));
  EXPECT_FALSE(with["pairs"][0].contains("prediction"));
  int matches = 0, matchesWithout = 0, byTrack = 0;
  for (std::size_t i = 1; i < steps.size(); ++i) {
    const nlohmann::json& pair = with["pairs"][i];
    const nlohmann::json& gain = pair["prediction"];
    EXPECT_EQ(gain["matches"], pair["matches"]);
    EXPECT_EQ(gain["matches_without"], without["pairs"][i]["matches"]);
    EXPECT_NEAR(gain["median_error_px"], 15, 0.1);
    EXPECT_NEAR(gain["median_error_standing_still_px"], steps[i], 0.1);
    if (steps[i] > 120) {
      EXPECT_GT(gain["matches"], 10 * gain["matches_without"].get<int>() + 50);
    }
    matches += gain["matches"].get<int>();
    matchesWithout += gain["matches_without"].get<int>();
    byTrack += gain["matches_predicted_by_track"].get<int>();
  }
  EXPECT_EQ(with["prediction"]["matches"], matches);
  EXPECT_EQ(with["prediction"]["matches_without"], matchesWithout);
  EXPECT_EQ(with["prediction"]["matches_predicted_by_track"], byTrack);
  EXPECT_NEAR(with["prediction"]["median_error_standing_still_px"], 125, 0.1);  // the upper one of four
}

TEST_F(TrackCommand, predictionFollowsWhatMovesAgainstTheImage) {
  const cv::Mat scene = texture(0, 0, 1, {800, 240}), thing = texture(0, 0, 2, {100, 200});
  const std::vector<int> places = {10, 80, 175, 295, 440, 610};  // the last two steps are longer than 120 px
  for (const int x : places) {
    cv::Mat frame = scene.clone();
    thing.copyTo(frame(cv::Rect({x, 20}, thing.size())));
    write("thing" + std::to_string(1000 + x) + ".png", frame);
  }
  const nlohmann::json pairs = resultOf("track 'thing*.png'")["pairs"];
  for (const int i : {3, 4}) {
    const nlohmann::json& gain = pairs[i]["prediction"];
    EXPECT_GT(gain["matches"], gain["matches_without"].get<int>() + 20) << gain;
  }
}

TEST_F(TrackCommand, nothingIsSaidOfPredictionWhereNothingIsPredicted) {
  writeFrames(3);
  for (const char* arguments :
       {"frame8.png frame9.png", "'frame*.png' --no-prediction", "'frame*.png' --mode exhaustive"}) {
    const ToolResult result = run(std::string("track --out out ") + arguments);
    EXPECT_EQ(result.status, 0) << arguments;
    EXPECT_EQ(result.output.find("prediction"), std::string::npos) << result.output;
    EXPECT_FALSE(readJson("out/motion.json").contains("prediction")) << arguments;
  }
  EXPECT_NE(run("track 'frame*.png' --out out").output.find("\nprediction    "), std::string::npos);
}

TEST_F(TrackCommand, noMatchIsStatus1AndSaysWhichTestLeftNothing) {
  write("a.png", texture(0, 0, 1));
  write("b.png", texture(0, 0, 2));
  const ToolResult result = run("track a.png b.png --out out --json");
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(std::regex_match(
      result.errors, std::regex("mirel track: no match from a.png to b.png: \\d+ features, \\d+ with candidates in "
                                "their circle, \\d+ within the distance, \\d+ after the ratio test, \\d+ after the "
                                "backward test; .*\n")))
      << result.errors;
  EXPECT_EQ(result.json()["pairs"][0]["matched"], false);
  EXPECT_TRUE(exists("out/report.html"));
}

TEST_F(TrackCommand, theReportStandsAlone) {
  write("a<b&.png", texture(0, 0));
  writeFrames(3);
  expectSuccess("track \"a<b&.png\" 'frame*.png' --out out --set FBMnFeatures=200");
  const std::string page = read("out/report.html");
  for (const char* outside : {"http:", "https:", "<link", "@import", "url(", "sourceMappingURL", "{{"}) {
    EXPECT_EQ(page.find(outside), std::string::npos) << outside;
  }
  EXPECT_EQ(page.find("a<b"), std::string::npos);
  for (std::size_t at = 0; (at = page.find("src=\"", at)) != std::string::npos; ++at) {
    EXPECT_EQ(page.compare(at, 16, "src=\"data:image/"), 0);
  }
  const std::string open = "<script type=\"application/json\" id=\"data\">";
  const std::size_t begin = page.find(open) + open.size();
  const nlohmann::json data = nlohmann::json::parse(page.substr(begin, page.find("</script>", begin) - begin));
  EXPECT_EQ(data["result"], readJson("out/motion.json"));
  EXPECT_EQ(data["run"], readJson("out/run.json"));
  EXPECT_NE(page.find("<tr class=\"changed\"><td class=\"name\">FBMnFeatures</td><td class=\"name\">200"),
            std::string::npos);
}

}  // namespace
