#include "ToolTest.h"

#include <MirelAlgorithms/smoothing/SparsePoints.h>
#include <support/SettingsOf.h>

namespace {

/// Points on a wavy surface, some far off, some alone; one text column more than needed.
class PointsCommand : public ToolTest {
 protected:
  PointsCommand() {
    cv::RNG random(11);
    std::string text = "x_px,y_px,x_m,y_m,z_m,name\n";
    for (int i = 0; i < points_.rows; ++i) {
      const float x = random.uniform(0.f, 640.f), y = random.uniform(0.f, 480.f);
      const float off = i % 17 == 0 ? random.uniform(-0.5f, 0.5f) : 0.f, away = i % 29 == 0 ? 50.f * i : 0.f;
      const float row[] = {x, y, x / 300 + away, y / 700, 2 + 0.2f * std::sin(x / 90) + off};
      std::copy(std::begin(row), std::end(row), points_.ptr<float>(i));
      for (const float value : row) text += cv::format("%.9g,", value);
      text += cv::format("\"p,%d\"\n", i);
    }
    write("in.csv", text);
  }

  cv::Mat1f points_ = cv::Mat1f(3000, 5);
};

TEST_F(PointsCommand, rowsAreThoseOfTheLibraryAndEveryDropHasItsReason) {
  const struct {
    int mode;
    std::set<std::string> reasons;  // with rows
  } cases[] = {{0x2000, {"few_neighbours", "off_median"}},
               {0x3000, {"small_cell", "wide_cell", "uneven_cell", "above_mean"}},
               {0x4000, {"small_cell", "wide_cell", "uneven_cell", "above_mean", "alternate"}},
               {0x5000, {"between_steps"}},
               {0x6000, {"between_steps"}},
               {0x7000, {}}};
  for (const auto& [mode, reasons] : cases) {
    const auto settings = MirelAlgorithms::settingsOf(
        {{L"smoothSparseMode", mode}, {L"smoothSparseMaxPts", 250}, {L"smoothSparseMinPts", 20}});
    cv::Mat kept;
    ASSERT_TRUE(MirelAlgorithms::smoothSparse3D(points_, kept, settings));
    const nlohmann::json numbers = resultOf(cv::format(
        "points in.csv out.csv --set smoothSparseMode=0x%X --set smoothSparseMaxPts=250 --set smoothSparseMinPts=20 "
        "--out out",
        static_cast<unsigned>(mode)));
    const auto rows = readCsv("out.csv");
    ASSERT_EQ(rows.size(), static_cast<std::size_t>(kept.rows) + 1) << mode;
    EXPECT_EQ(rows[0], (std::vector<std::string>{"x_px", "y_px", "x_m", "y_m", "z_m", "name"}));
    for (int i = 0; i < kept.rows; ++i) {
      for (int k = 0; k < 5; ++k) ASSERT_EQ(std::stof(rows[i + 1][k]), kept.at<float>(i, k)) << mode << " " << i;
      ASSERT_EQ(rows[i + 1][5], "\"p");  // the rest of the name is the next cell for this reader
    }
    EXPECT_EQ(numbers["rows_in"], 3000);
    EXPECT_EQ(numbers["rows_kept"], kept.rows);
    std::set<std::string> found;
    int dropped = 0;
    for (const auto& [reason, count] : numbers["dropped"].items()) {
      dropped += count.get<int>();
      if (count > 0) found.insert(reason);
    }
    EXPECT_EQ(dropped, 3000 - kept.rows);
    EXPECT_EQ(found, reasons) << numbers["dropped"];
    EXPECT_EQ(files("out"), (std::set<std::string>{"points.png", "report.html", "run.json"}));
  }
}

TEST_F(PointsCommand, columnsAreKnownByHeadPlaceOrChoice) {
  const std::string one = "--set smoothSparseMode=0 --set smoothSparseMinPts=1";
  const struct {
    const char *table, *options, *written;
  } cases[] = {{"1;2;3;4;5;9\n", "", "x_px,y_px,x_m,y_m,z_m,column 6\n1,2,3,4,5,9\n"},
               {"id,z,y,x,v,u\n9,5,4,3,2,1\n", "", "id,z_m,y_m,x_m,y_px,x_px\n9,5,4,3,2,1\n"},
               {"a,b,c,d,e\n1,2,3,4,5e0\n", "", "a,b,c,d,e\n1,2,3,4,5e0\n"},
               {"t,a,b,c,d,e\n0,1,2,3,4,5\n", "--columns a,b,4,5,e", "t,a,b,c,d,e\n0,1,2,3,4,5\n"}};
  for (const auto& [table, options, written] : cases) {
    write("same.csv", table);
    expectSuccess("points same.csv same.csv " + one + " " + options);
    EXPECT_EQ(read("same.csv"), written);
  }
}

TEST_F(PointsCommand, tooFewPointsAreNoResult) {
  const Refusal cases[] = {
      {"--set smoothSparseMinPts=3001", "3000 rows given, at least 3001 expected (smoothSparseMinPts)"},
      {"--set smoothSparseMaxPts=100000",
       "0 of 3000 points kept, at least 100 expected (smoothSparseMinPts); most drops: cell with fewer than 6 "
       "points (3000 rows); a smaller smoothSparseMaxPts"},
      {"--set smoothSparseMode=0x6000 --set smoothSparseMinPts=751", "750 of 3000 points kept"}};
  for (const auto& [settings, said] : cases) {
    EXPECT_EQ(resultOfNothing("points in.csv out.csv " + settings, said)["enough"], false);
    EXPECT_FALSE(exists("out.csv"));
    EXPECT_TRUE(exists("mirel-out/points.png"));
  }
}

TEST_F(PointsCommand, wrongUsageIsRefused) {
  expectRefused("points", {{"", "no table given"}, {"in.csv", "no name for the kept points"}});
  expectRefused("points in.csv out.csv --columns", {{"1,2,3,4", "--columns: 4 columns given, 5 expected"},
                                                    {"1,2,3,4,name", "column 6 (name): 'p,0' given"},
                                                    {"1,2,3,4,7", "a head or a number from 1 to 6"}});
}

}  // namespace
