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

  cv::Mat image(const std::string& name) const { return cv::imread(name, cv::IMREAD_UNCHANGED); }
  static bool equal(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0;
  }

  cv::Mat1w slope_ = cv::Mat1w(12, 16), smoothed_;
};

TEST_F(DepthCommand, imageAndNumbersAreKnown) {
  const nlohmann::json numbers = resultOf("depth in.png out.tif --set smoothDenseRadius=3 --out out");
  EXPECT_TRUE(equal(image("out.tif"), smoothed_)) << image("out.tif");
  const nlohmann::json expected = {{"width_px", 16},
                                   {"height_px", 12},
                                   {"filter", "median"},
                                   {"window_px", 3},
                                   {"valid_before_px", 191},
                                   {"valid_after_px", 183},
                                   {"removed_px", 8},
                                   {"valid_share_after", 183.0 / 192},
                                   {"largest_change", -60000},
                                   {"largest_change_x_px", 12},
                                   {"largest_change_y_px", 8},
                                   {"changed_px", 1},
                                   {"mean_absolute_change", 60000.0 / 183}};
  for (const auto& [name, value] : expected.items()) EXPECT_EQ(numbers[name], value) << name;
  EXPECT_EQ(files("out"), (std::set<std::string>{"before_after.png", "report.html", "run.json"}));
  EXPECT_EQ(resultOf("depth in.png out.png --set smoothDenseMode=0x1")["filter"], "non-local means");
}

TEST_F(DepthCommand, inputMayBeReplaced) {
  expectSuccess("depth in.png other.pgm");
  expectSuccess("depth - copy.png <in.png");
  expectSuccess("depth in.png in.png");
  EXPECT_FALSE(equal(image("in.png"), slope_));
  EXPECT_TRUE(equal(image("in.png"), image("other.pgm")));
  EXPECT_TRUE(equal(image("in.png"), image("copy.png")));
}

TEST_F(DepthCommand, withoutDepthThereIsNoResult) {
  write("holes.png", cv::Mat(20, 20, CV_16U, cv::Scalar(0)));
  const nlohmann::json numbers =
      resultOfNothing("depth holes.png out.png", "no pixel keeps its depth, 0 of 400 had one");
  EXPECT_EQ(numbers["largest_change_x_px"], nullptr);
  EXPECT_FALSE(exists("out.png"));
  EXPECT_TRUE(exists("mirel-out/report.html"));
}

TEST_F(DepthCommand, whatCannotBeUsedIsRefused) {
  write("before_after.png", slope_);
  expectRefused("depth", {{"", "no image given"},
                          {"in.png", "no name for the smoothed image"},
                          {"in.png in.jpg", "in.jpg: holds no 16-bit grey"},
                          {"before_after.png out.png --out .", "the run's own before_after.png would take the place"},
                          {"in.png before_after.png --out .", "the run's own before_after.png would take the place"}});
  expectRefused("depth in.png in.png --set", {{"smoothDenseRadius=4", "4 given, 1, 3 or 5 expected"},
                                              {"smoothDenseRadius=7", "7 given, 1, 3 or 5 expected for the median"},
                                              {"smoothDenseRadius=-3 --set smoothDenseMode=1", "-3 given, an odd"},
                                              {"smoothDenseRadius=183 --set smoothDenseMode=1", "183"}});
}

}  // namespace
