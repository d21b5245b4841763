#include "ToolTest.h"

#include <MirelAlgorithms/filters/SavitzkyGolay.h>

namespace {

class SmoothCommand : public ToolTest {
 protected:
  SmoothCommand() {
    cv::RNG random(3);
    std::string text = "time,\"speed, m/s\",state,pressure\n";
    for (int i = 0; i < 40; ++i) {
      speed_.push_back(random.uniform(-5.0, 5.0));
      pressure_.push_back(random.uniform(9e4, 1e5));
      text += cv::format("%d,%.17g,\"a,b\",%.17g\n", 10 * i, speed_.back(), pressure_.back());
    }
    write("in.csv", text);
  }

  std::vector<double> speed_, pressure_;
};

TEST_F(SmoothCommand, columnsAreThoseOfTheLibrary) {
  for (const int window : {5, 25}) {
    const std::string number = std::to_string(window);
    const ToolResult result = run("smooth in.csv --json --out out --window " + number);
    ASSERT_EQ(result.status, 0) << result.errors;
    std::vector<double> speed, pressure;
    ASSERT_TRUE(MirelAlgorithms::sgCubicSmoother(speed_, speed, window));
    ASSERT_TRUE(MirelAlgorithms::sgCubicSmoother(pressure_, pressure, window));
    std::istringstream lines(read("out/smoothed.csv"));
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "time,\"speed, m/s\",state,pressure");
    double sum = 0;
    for (int i = 0; i < 40; ++i) {
      std::getline(lines, line);
      const std::string middle = ",\"a,b\",";
      const std::size_t at = line.find(middle), first = line.find(',') + 1;
      ASSERT_EQ(line.substr(0, first), std::to_string(10 * i) + ",");
      EXPECT_EQ(std::stod(line.substr(first)), speed[i]);
      EXPECT_EQ(std::stod(line.substr(at + middle.size())), pressure[i]);
      sum += (speed[i] - speed_[i]) * (speed[i] - speed_[i]);
    }
    const nlohmann::json numbers = result.json();
    EXPECT_EQ(numbers["samples"], 40);
    EXPECT_EQ(numbers["window"], window);
    ASSERT_EQ(numbers["columns"].size(), 2u);
    EXPECT_NEAR(numbers["columns"][0]["rms_change"], std::sqrt(sum / 40), 1e-12);
    EXPECT_EQ(numbers["copied"], (nlohmann::json{"time", "state"}));
  }
  EXPECT_EQ(files("out"), (std::set<std::string>{"report.html", "run.json", "smooth.png", "smoothed.csv"}));
}

TEST_F(SmoothCommand, columnsCanBeChosen) {
  const nlohmann::json numbers = run("smooth - --columns pressure,1 --json <in.csv").json();
  ASSERT_EQ(numbers["columns"].size(), 2u);
  EXPECT_EQ(numbers["columns"][0]["name"], "time");
  EXPECT_EQ(numbers["columns"][1]["name"], "pressure");
  write("bare.csv", "1\n2\n3\n4\n5\n6\n7\n8\n");
  EXPECT_EQ(run("smooth bare.csv --json").json()["samples"], 8);
}

TEST_F(SmoothCommand, whatCannotBeSmoothedIsRefused) {
  write("short.csv", "a\n1\n2\n3\n");
  write("text.csv", "a,b\n1,x\n2,y\n3,z\nword,z\n");
  write("words.csv", "a\nx\ny\n");
  write("huge.csv", "a\n1\n2\n3\n-1e301\n");
  write("back.csv", "t_s,a\n0,1\n1,2\n0.5,3\n");
  const struct {
    const char *arguments, *said;
  } cases[] = {{"", "no table given"},
               {"in.csv --window 6", "--window: 6 given"},
               {"in.csv --window 27", "--window: 27 given"},
               {"in.csv --window 3", "--window: 3 given"},
               {"in.csv --columns presure", "did you mean pressure?"},
               {"in.csv --columns 5", "a number from 1 to 4"},
               {"in.csv --columns state", "in.csv:2: column 3 (state): 'a,b' given"},
               {"short.csv --window 5", "short.csv: 3 samples, at least 4 expected for a window of 5"},
               {"text.csv --window 5", "text.csv:5: column 1 (a): 'word' given"},
               {"words.csv", "no column of numbers"},
               {"huge.csv --window 5", "huge.csv:5: column 1 (a): -1e+301 given"},
               {"back.csv", "back.csv:4: column 1 (t_s): time stamp 0.5 after 1"},
               {"missing.csv", "missing.csv: no such file"},
               {".", "a folder"}};
  for (const auto& [arguments, said] : cases) {
    const ToolResult result = run(std::string("smooth ") + arguments);
    EXPECT_EQ(result.status, 2) << arguments;
    EXPECT_EQ(result.errorLines(), 1) << result.errors;
    EXPECT_NE(result.errors.find(said), std::string::npos) << result.errors;
    EXPECT_FALSE(exists("mirel-out")) << arguments;
  }
}

}  // namespace
