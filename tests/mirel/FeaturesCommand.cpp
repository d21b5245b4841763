#include "ToolTest.h"
#include "output/Digest.h"

#include <support/Xfeatures2d.h>
#include <opencv2/core.hpp>

namespace {

using FeaturesCommand = ToolTest;

TEST_F(FeaturesCommand, filesAndNumbersAgree) {
  write("a.png", texture(0, 0));
  const nlohmann::json numbers = resultOf("features a.png --out out --set FBMnFeatures=90 --descriptors d.yml.gz");
  EXPECT_EQ(numbers["schema"], 1);
  EXPECT_EQ(numbers["kept"], 90);
  EXPECT_EQ(numbers["least_per_cell"], 10);
  EXPECT_EQ(numbers["most_per_cell"], 10);
  EXPECT_EQ(files("out"), (std::set<std::string>{"features.csv", "overlay.png", "report.html", "run.json"}));

  const auto csv = readCsv("out/features.csv");
  ASSERT_EQ(csv.size(), 91u);
  EXPECT_EQ(csv[0], (std::vector<std::string>{"x_px", "y_px", "size_px", "angle", "response", "descriptor_hex"}));
  cv::Mat features, descriptors;
  cv::FileStorage storage("d.yml.gz", cv::FileStorage::READ);
  storage["features"] >> features;
  storage["descriptors"] >> descriptors;
  EXPECT_EQ(static_cast<int>(storage["width"]), 320);
  ASSERT_EQ(features.size(), cv::Size(5, 90));
  ASSERT_EQ(descriptors.rows, 90);
  for (int i = 0; i < 90; ++i) {
    for (int k = 0; k < 5; ++k) EXPECT_EQ(std::stof(csv[i + 1][k]), features.at<float>(i, k)) << i;
    EXPECT_EQ(csv[i + 1][5], mirel::hexadecimal({descriptors.ptr<char>(i), descriptors.step[0]})) << i;
  }
}

TEST_F(FeaturesCommand, cellsAndCountsAreThoseOfTheDetector) {
  write("a.png", texture(0, 0));
  const auto result = [&](const std::string& type, const std::string& settings) {
    return run("features a.png --json --set FBMnCells=7 --set FBMDescriptorType=3 --set FBMType=" + type + settings)
        .json();
  };
  for (const char* type :
       {"0", "1", "2 --set FBMFeatureType=0", "2 --set FBMFeatureType=2", "2 --set FBMFeatureType=5"}) {
    if (!WITH_XFEATURES2D && type[0] == '1') continue;  // always described by LATCH
    const bool fixedPoint = type[0] == '0';
    for (const int quota : {4, 1000}) {
      const nlohmann::json numbers = result(type, " --set FBMnFeatures=" + std::to_string(49 * quota + 48));
      EXPECT_EQ(numbers["quota_per_cell"], quota);
      int found = 0, kept = 0;
      for (const auto& cell : numbers["cells"]) {
        found += cell["found"].get<int>();
        kept += cell["kept"].get<int>();
        EXPECT_EQ(cell["kept"], std::min(cell["found"].get<int>(), quota)) << type;
      }
      EXPECT_GT(found, 100) << type;
      EXPECT_EQ(numbers["found"], found) << type;
      EXPECT_EQ(numbers["kept_by_quotas"], kept) << type;
      EXPECT_EQ(numbers["dropped_by_quotas"], found - kept);
      EXPECT_EQ(numbers["kept"].get<int>() + numbers["dropped_by_descriptor"].get<int>(), kept) << type;
      const nlohmann::json& last = numbers["cells"].back();  // 320 x 240 = 7 * 45 + 5 x 7 * 34 + 2
      EXPECT_NEAR(last["x_px"].get<double>() + last["width_px"].get<double>(), fixedPoint ? 319.5 : 314.5, 1e-4);
      EXPECT_NEAR(last["y_px"].get<double>() + last["height_px"].get<double>(), fixedPoint ? 239.5 : 237.5, 1e-4);
    }
  }
  // Refinement moves features over borders, a threshold drops some: neither changes what was found where.
  if (WITH_XFEATURES2D) {
    EXPECT_EQ(result("1", "")["cells"], result("2", "")["cells"]);
  }
  EXPECT_EQ(result("0", " --set FBMUseAutoThreshold=true")["found"], result("0", "")["found"]);
  EXPECT_EQ(result("0", "")["quota_per_cell"], 900 / 49);
  EXPECT_EQ(result("2", "")["quota_per_cell"], 2000 / 49);
}

TEST_F(FeaturesCommand, nothingFoundIsStatus1) {
  write("flat.png", cv::Mat(120, 160, CV_8U, cv::Scalar(128)));
  resultOfNothing("features flat.png --out out", "no feature was found");
  EXPECT_EQ(readCsv("out/features.csv").size(), 1u);
  write("a.png", texture(0, 0));
  const nlohmann::json quota = resultOfNothing("features a.png --set FBMnFeatures=8", "the quota of a cell is 0");
  EXPECT_GT(quota["found"], 100);
  const nlohmann::json fine = run("features a.png --json --set FBMnCells=50000").json();
  EXPECT_EQ(fine["found"], quota["found"]);
  EXPECT_EQ(fine["cell_columns"], 50000);
  EXPECT_TRUE(fine["cells"].empty());
}

TEST_F(FeaturesCommand, dumpsOfTheLibraryGoToTheFolderOfResults) {
  write("a.png", texture(0, 0));
  expectSuccess("features a.png --out out --set FBMWriteEigenvals=true");
  const std::string dump = read("out/eigenVals_f.txt");
  EXPECT_EQ(std::count(dump.begin(), dump.end(), '\n'), 320 * 240);
}

TEST_F(FeaturesCommand, imagesOfAnyKindBecomeGrey) {
  const cv::Mat grey = texture(0, 0);
  cv::Mat colour, alpha, deep;
  cv::cvtColor(grey, colour, cv::COLOR_GRAY2BGR);
  cv::cvtColor(grey, alpha, cv::COLOR_GRAY2BGRA);
  grey.convertTo(deep, CV_16U, 256);
  write("grey.png", grey);
  write("colour.png", colour);
  write("alpha.png", alpha);
  write("deep.png", deep);
  expectSuccess("features grey.png --out expected");
  for (const std::string input : {"colour.png", "alpha.png", "deep.png", "- <grey.png"}) {
    expectSuccess("features --out out " + input);
    EXPECT_EQ(read("out/features.csv"), read("expected/features.csv")) << input;
  }
}

}  // namespace
