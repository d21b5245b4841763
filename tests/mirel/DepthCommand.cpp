#include "ToolTest.h"

namespace {

/// A slope with a hole and a pixel that is far off. A median of 3 x 3 pixels restores the slope but around the hole.
class DepthCommand : public ToolTest {
 protected:
  DepthCommand() {
    for (int y = 0; y < slope_.rows; ++y)
      for (int x = 0; x < slope_.cols; ++x) slope_(y, x) = static_cast<ushort>(1000 + 10 * x);
    smoothed_ = slope_.clone();
    slope_(3, 4) = 0;
    smoothed_(cv::Rect(3, 2, 3, 3)) = 0;
    slope_(8, 12) = 61120;
    write("in.png", slope_);
  }

  cv::Mat image(const std::string& name) const { return cv::imread(path(name).string(), cv::IMREAD_UNCHANGED); }
  static bool equal(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0;
  }

  cv::Mat1w slope_ = cv::Mat1w(12, 16), smoothed_;
};

TEST_F(DepthCommand, imageAndNumbersAreKnown) {
  const ToolResult result = run("depth in.png out.tif --set smoothDenseRadius=3 --out out --json");
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_TRUE(equal(image("out.tif"), smoothed_)) << image("out.tif");
  const nlohmann::json numbers = result.json();
  EXPECT_EQ(numbers["width_px"], 16);
  EXPECT_EQ(numbers["height_px"], 12);
  EXPECT_EQ(numbers["filter"], "median");
  EXPECT_EQ(numbers["window_px"], 3);
  EXPECT_EQ(numbers["valid_before_px"], 191);
  EXPECT_EQ(numbers["valid_after_px"], 183);
  EXPECT_EQ(numbers["removed_px"], 8);
  EXPECT_DOUBLE_EQ(numbers["valid_share_after"], 183.0 / 192);
  EXPECT_EQ(numbers["largest_change"], -60000);
  EXPECT_EQ(numbers["largest_change_x_px"], 12);
  EXPECT_EQ(numbers["largest_change_y_px"], 8);
  EXPECT_EQ(numbers["changed_px"], 1);
  EXPECT_DOUBLE_EQ(numbers["mean_absolute_change"], 60000.0 / 183);
  EXPECT_EQ(files("out"), (std::set<std::string>{"before_after.png", "report.html", "run.json"}));
}

TEST_F(DepthCommand, inputMayBeReplaced) {
  ASSERT_EQ(run("depth in.png other.pgm").status, 0);
  ASSERT_EQ(run("depth - copy.png <in.png").status, 0);
  ASSERT_EQ(run("depth in.png in.png").status, 0);
  EXPECT_FALSE(equal(image("in.png"), slope_));
  EXPECT_TRUE(equal(image("in.png"), image("other.pgm")));
  EXPECT_TRUE(equal(image("in.png"), image("copy.png")));
}

TEST_F(DepthCommand, runsAreRepeated) {
  const ToolResult first = run("depth in.png out.png --set smoothDenseMode=0x1 --set smoothDenseRadius=3 --json");
  ASSERT_EQ(first.status, 0) << first.errors;
  const cv::Mat written = image("out.png");
  std::filesystem::remove(path("out.png"));
  EXPECT_EQ(run("--config mirel-out/run.json --json").json(), first.json());
  EXPECT_TRUE(equal(image("out.png"), written));
  EXPECT_EQ(first.json()["filter"], "non-local means");
}

TEST_F(DepthCommand, withoutDepthThereIsNoResult) {
  write("holes.png", cv::Mat(20, 20, CV_16U, cv::Scalar(0)));
  const ToolResult result = run("depth holes.png out.png --json");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errorLines(), 1) << result.errors;
  EXPECT_NE(result.errors.find("no pixel keeps its depth, 0 of 400 had one"), std::string::npos) << result.errors;
  EXPECT_EQ(result.json()["largest_change_x_px"], nullptr);
  EXPECT_FALSE(exists("out.png"));
  EXPECT_TRUE(exists("mirel-out/report.html"));
}

TEST_F(DepthCommand, whatCannotBeUsedIsRefused) {
  write("text.png", std::string("no image"));
  write("empty.png", std::string());
  write("cut.png", read("in.png").substr(0, read("in.png").size() / 2));
  write("grey.png", cv::Mat(9, 9, CV_8U, cv::Scalar(7)));
  write("colour.png", cv::Mat(9, 9, CV_16UC3, cv::Scalar(7, 8, 9)));
  write("before_after.png", slope_);
  const std::string before = read("in.png");
  const struct {
    const char *arguments, *said;
  } cases[] = {{"", "no image given"},
               {"in.png", "no name for the smoothed image"},
               {"text.png out.png", "text.png: not an image"},
               {"empty.png out.png", "empty.png: empty, a 16-bit grey image expected"},
               {"cut.png out.png", "cut.png: the image ends too early"},
               {"grey.png out.png", "grey.png: 8-bit grey given, 16-bit grey expected"},
               {"colour.png out.png", "colour.png: 16-bit in 3 channels given"},
               {"missing.png out.png", "missing.png: no such file"},
               {". out.png", ".: a folder"},
               {"in.png in.jpg", "in.jpg: holds no 16-bit grey"},
               {"in.png out", "out: holds no 16-bit grey"},
               {"in.png nowhere/out.png", "nowhere/out.png: cannot be written"},
               {"in.png out.png --out in.png", "--out in.png: cannot write there"},
               {"before_after.png out.png --out .", "the run's own before_after.png would take the place"},
               {"in.png before_after.png --out .", "the run's own before_after.png would take the place"},
               {"in.png in.png --set smoothDenseRadius=4", "4 given, 1, 3 or 5 expected"},
               {"in.png in.png --set smoothDenseRadius=7", "7 given, 1, 3 or 5 expected for the median"},
               {"in.png in.png --set smoothDenseRadius=-3 --set smoothDenseMode=1", "-3 given, an odd number"},
               {"in.png in.png --set smoothDenseRadius=183 --set smoothDenseMode=1", "183"},
               {"in.png in.png --set smoothDenseRadius=0x", "'0x' given"},
               {"in.png in.png --set smoothDenseRadus=3", "did you mean smoothDenseRadius?"}};
  const std::set<std::string> there = files(".");
  for (const auto& [arguments, said] : cases) {
    const ToolResult result = run(std::string("depth ") + arguments);
    EXPECT_EQ(result.status, 2) << arguments;
    EXPECT_EQ(result.errorLines(), 1) << result.errors;
    EXPECT_NE(result.errors.find(said), std::string::npos) << result.errors;
    std::set<std::string> now = files(".");
    now.erase("stdout");
    now.erase("stderr");
    EXPECT_EQ(now, there) << arguments;
  }
  EXPECT_EQ(read("in.png"), before);
}

}  // namespace
