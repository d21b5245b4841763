#include "ToolTest.h"

#include <opencv2/core.hpp>

namespace {

using FeaturesCommand = ToolTest;

std::string hexadecimal(const cv::Mat& row) {
  std::string text;
  for (int i = 0; i < row.cols; ++i) text += cv::format("%02x", row.at<uchar>(0, i));
  return text;
}

TEST_F(FeaturesCommand, filesAndNumbersAgree) {
  write("a.png", texture(0, 0));
  const ToolResult result = run("features a.png --out out --json --set FBMnFeatures=90 --descriptors d.yml.gz");
  ASSERT_EQ(result.status, 0) << result.errors;
  const nlohmann::json numbers = result.json();
  EXPECT_EQ(numbers["schema"], 1);
  EXPECT_EQ(numbers["kept"], 90);
  EXPECT_EQ(numbers["least_per_cell"], 10);
  EXPECT_EQ(numbers["most_per_cell"], 10);
  EXPECT_EQ(files("out"), (std::set<std::string>{"features.csv", "overlay.png", "report.html", "run.json"}));

  const auto csv = readCsv("out/features.csv");
  ASSERT_EQ(csv.size(), 91u);
  EXPECT_EQ(csv[0], (std::vector<std::string>{"x_px", "y_px", "size_px", "angle", "response", "descriptor_hex"}));
  cv::Mat features, descriptors;
  cv::FileStorage storage(path("d.yml.gz").string(), cv::FileStorage::READ);
  storage["features"] >> features;
  storage["descriptors"] >> descriptors;
  ASSERT_EQ(features.size(), cv::Size(5, 90));
  ASSERT_EQ(descriptors.rows, 90);
  for (int i = 0; i < 90; ++i) {
    for (int k = 0; k < 5; ++k) EXPECT_EQ(std::stof(csv[i + 1][k]), features.at<float>(i, k)) << i;
    EXPECT_EQ(csv[i + 1][5], hexadecimal(descriptors.row(i))) << i;
  }
}

TEST_F(FeaturesCommand, standardInputIsAnImageToo) {
  write("a.png", texture(0, 0));
  ASSERT_EQ(run("features a.png --out file --quiet").status, 0);
  ASSERT_EQ(run("features - --out input --quiet <a.png").status, 0);
  EXPECT_EQ(read("file/features.csv"), read("input/features.csv"));
}

TEST_F(FeaturesCommand, nothingFoundIsStatus1) {
  write("flat.png", cv::Mat(120, 160, CV_8U, cv::Scalar(128)));
  const ToolResult result = run("features flat.png --out out --quiet");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errorLines(), 1);
  EXPECT_EQ(readCsv("out/features.csv").size(), 1u);
}

TEST_F(FeaturesCommand, dumpsOfTheLibraryGoToTheFolderOfResults) {
  write("a.png", texture(0, 0));
  ASSERT_EQ(run("features a.png --out out --quiet --set FBMWriteEigenvals=true").status, 0);
  const std::string dump = read("out/eigenVals_f.txt");
  EXPECT_EQ(std::count(dump.begin(), dump.end(), '\n'), 320 * 240);
}

TEST_F(FeaturesCommand, colourAndDeepImagesBecomeGrey) {
  const cv::Mat grey = texture(0, 0);
  cv::Mat colour, deep;
  cv::cvtColor(grey, colour, cv::COLOR_GRAY2BGR);
  grey.convertTo(deep, CV_16U, 256);
  const std::pair<const char*, cv::Mat> images[] = {{"grey.png", grey}, {"colour.png", colour}, {"deep.png", deep}};
  for (const auto& [name, image] : images) {
    write(name, image);
    ASSERT_EQ(run(std::string("features ") + name + " --quiet --out " + name + ".out").status, 0) << name;
    EXPECT_EQ(read(std::string(name) + ".out/features.csv"), read("grey.png.out/features.csv")) << name;
  }
}

}  // namespace
