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
    const nlohmann::json numbers = resultOf("smooth in.csv --out out --window " + std::to_string(window));
    std::vector<double> speed, pressure;
    ASSERT_TRUE(MirelAlgorithms::sgCubicSmoother(speed_, speed, window));
    ASSERT_TRUE(MirelAlgorithms::sgCubicSmoother(pressure_, pressure, window));
    const auto rows = readCsv("out/smoothed.csv");  // which splits texts in quotes, too
    ASSERT_EQ(rows.size(), 41u);
    EXPECT_EQ(rows[0], (std::vector<std::string>{"time", "\"speed", " m/s\"", "state", "pressure"}));
    double sum = 0;
    for (int i = 0; i < 40; ++i) {
      const std::vector<std::string>& row = rows[i + 1];
      EXPECT_EQ(row[0] + row[2] + row[3], std::to_string(10 * i) + "\"ab\"");
      EXPECT_EQ(std::stod(row[1]), speed[i]);
      EXPECT_EQ(std::stod(row[4]), pressure[i]);
      sum += (speed[i] - speed_[i]) * (speed[i] - speed_[i]);
    }
    EXPECT_EQ(numbers["samples"], 40);
    EXPECT_EQ(numbers["window"], window);
    ASSERT_EQ(numbers["columns"].size(), 2u);
    EXPECT_NEAR(numbers["columns"][0]["rms_change"], std::sqrt(sum / 40), 1e-12);
    EXPECT_EQ(numbers["copied"], (nlohmann::json{"time", "state"}));
  }
  EXPECT_EQ(files("out"), (std::set<std::string>{"report.html", "run.json", "smooth.png", "smoothed.csv"}));
}

TEST_F(SmoothCommand, columnsCanBeChosen) {
  const nlohmann::json numbers = resultOf("smooth - --columns pressure,1 <in.csv");
  ASSERT_EQ(numbers["columns"].size(), 2u);
  EXPECT_EQ(numbers["columns"][0]["name"], "time");
  EXPECT_EQ(numbers["columns"][1]["name"], "pressure");
  write("bare.csv", "1\n2\n3\n4\n5\n6\n7\n8\n");
  EXPECT_EQ(resultOf("smooth bare.csv")["samples"], 8);
}

TEST_F(SmoothCommand, wrongUsageIsRefused) {
  write("text.csv", "a,b\n1,x\n2,y\n3,z\nword,z\n");
  expectRefused("smooth", {{"", "no table given"},
                           {"in.csv --window 6", "--window: 6 given"},
                           {"in.csv --window 27", "--window: 27 given"},
                           {"in.csv --window 3", "--window: 3 given"},
                           {"in.csv --columns presure", "did you mean pressure?"},
                           {"in.csv --columns 5", "a number from 1 to 4"},
                           {"in.csv --columns state", "in.csv:2: column 3 (state): 'a,b' given"},
                           {"text.csv --window 5", "text.csv:5: column 1 (a): 'word' given"}});
}

}  // namespace
