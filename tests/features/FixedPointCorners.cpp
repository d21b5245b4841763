#include <MirelAlgorithms/features/FixedPointCorners.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "CornerScenes.h"
#include "LiteralCorners.h"
#include "support/Matrices.h"
#include "support/SettingsOf.h"

namespace MirelAlgorithms {
namespace {

/// Settings without enhancement, which other functions do.
Settings plainSettings(bool fixedPoint) {
  return with(L"FBMFpgaQuantized", fixedPoint, settingsOf({{L"FBMEnhancement", 0}}));
}

Settings settingsFor(const literal::Settings& s, bool fixedPoint) {
  const Settings settings = settingsOf({{L"FBMEnhancement", 0},
                                        {L"FBMBlockSize", s.block},
                                        {L"FBMSobelSize", s.aperture},
                                        {L"FBMLumaLeftShift", s.lumaShift},
                                        {L"FBMEigenValWidthOut", s.eigenOut},
                                        {L"FBMnCells", s.cells},
                                        {L"FBMnFeatures", s.budget}});
  settings->set(L"FBMFpgaQuantized", fixedPoint);
  settings->set(L"FBMExtractionModel", std::wstring(s.test.begin(), s.test.end()).c_str());
  settings->set(L"FBMUseAutoThreshold", s.autoThreshold);
  return settings;
}

struct Result {
  cv::Mat features, map;
};

Result detect(const cv::Mat& image, const Settings& settings) {
  Result result;
  const auto map = std::make_shared<cv::Mat>();
  EXPECT_TRUE(retrieveFeaturesFPGA(image, result.features, settings, map));
  result.map = *map;
  cv::Mat withoutMap;
  EXPECT_TRUE(retrieveFeaturesFPGA(image, withoutMap, settings, nullptr));
  EXPECT_TRUE(same(withoutMap, result.features));
  return result;
}

void expectEqual(const std::vector<cv::KeyPoint>& expected, const cv::Mat& features) {
  std::vector<cv::Vec<float, 5>> rows;
  for (const cv::KeyPoint& k : expected) rows.emplace_back(k.pt.x, k.pt.y, k.size, k.angle, k.response);
  EXPECT_TRUE(same(cv::Mat(rows), features)) << rows.size() << " expected, " << features.rows << " found";
}

void expectDefinition(const cv::Mat& image, const literal::Settings& settings, bool fixedPoint) {
  const literal::Response response =
      fixedPoint ? literal::fixedPointResponse(image, settings) : literal::floatResponse(image.clone(), settings);
  const cv::Mat_<float> map = literal::normalised(response);
  const Result result = detect(image, settingsFor(settings, fixedPoint));
  EXPECT_TRUE(same(result.map, map));
  expectEqual(literal::select(literal::candidates(map, settings.test), image.size(), settings), result.features);
}

TEST(FixedPointCorners, agreeWithTheDefinition) {
  // A periodic picture: candidates of equal response, and maxima on plateaus.
  cv::Mat board(120, 130, CV_8UC1);
  for (int y = 0; y < board.rows; ++y)
    for (int x = 0; x < board.cols; ++x) board.at<uchar>(y, x) = (x / 10 + y / 10) % 2 == 0 ? 30 : 200;
  const literal::Settings all[] = {{},
                                   {.test = "AverageRingMask"},
                                   {.cells = 1, .budget = 9, .autoThreshold = true},  // fewer than there are
                                   {.test = "anything else"},
                                   {.budget = 40, .autoThreshold = true},
                                   {.cells = 4, .budget = 50},
                                   {.cells = 1, .budget = 7},
                                   {.cells = 7, .budget = 1000000},
                                   {.block = 4, .aperture = 5},
                                   {.lumaShift = 11},
                                   {.eigenOut = 8, .test = "weighted"},  // many equal values
                                   {.eigenOut = 32}};
  for (std::size_t i = 0; i < std::size(all); ++i)
    for (const bool fixedPoint : {false, true}) {
      SCOPED_TRACE(testing::Message() << "settings " << i << (fixedPoint ? ", fixed point" : ""));
      for (const cv::Mat& image :
           {cornerScene(150, 203, i), oddView(harshNoise(64, 48, i)), board, cv::Mat(50, 60, CV_8UC1, cv::Scalar(0))})
        expectDefinition(image, all[i], fixedPoint);
    }
}

TEST(FixedPointCorners, sizesAroundTheSmallestWithFeatures) {
  for (const int rows : {2, 16, 17, 18, 25})
    for (const int cols : {4, 16, 17, 24})
      for (const bool fixedPoint : {false, true}) {
        SCOPED_TRACE(testing::Message() << rows << " x " << cols << (fixedPoint ? " fixed" : ""));
        expectDefinition(cornerScene(rows, cols, 5), literal::Settings(), fixedPoint);
      }
}

TEST(FixedPointCorners, defaultsAndPreparation) {
  const cv::Mat image = cornerScene(200, 300, 8);
  cv::Mat enhanced, median, features;
  MirelCore::enhance(image, enhanced, 90000, {});
  EXPECT_TRUE(retrieveFeaturesFPGA(image, features, nullptr, nullptr));
  literal::Settings settings;
  const auto expected = [&](const cv::Mat& work) {
    const cv::Mat_<float> map = literal::normalised(literal::floatResponse(work, settings));
    return literal::select(literal::candidates(map, settings.test), work.size(), settings);
  };
  expectEqual(expected(enhanced), features);

  cv::medianBlur(image, median, 3);
  const Settings filtered = plainSettings(false);
  filtered->set(L"UseBilateralFilter", true);
  EXPECT_TRUE(retrieveFeaturesFPGA(image, features, filtered, nullptr));
  expectEqual(expected(median), features);
}

/// The folder where stages are dumped, one a test: tests run side by side.
class Dumps : public testing::TestWithParam<bool> {
 protected:
  Dumps() { std::filesystem::create_directories(folder_); }
  ~Dumps() override { std::filesystem::remove_all(folder_); }

  std::vector<double> values(const char* name) const {
    std::ifstream file(folder_ / (std::string("x_") + name));
    return {std::istream_iterator<double>(file), {}};
  }

  const std::filesystem::path folder_ =
      std::filesystem::path(testing::TempDir()) / (GetParam() ? "corner dumps q" : "corner dumps f");
};

TEST_P(Dumps, ofAllStages) {
  const bool fixedPoint = GetParam();
  const cv::Mat image = cornerScene(30, 33, 4);
  const Settings settings = plainSettings(fixedPoint);
  settings->set(L"FBMWorkDir", (folder_ / "x_").wstring().c_str());
  const cv::Mat expected = detect(image, settings).map;
  EXPECT_TRUE(std::filesystem::is_empty(folder_));
  for (const wchar_t* key : {L"FBMWriteSobel", L"FBMWriteGradMult", L"FBMWriteCovar", L"FBMWriteEigenvals"})
    settings->set(key, true);
  EXPECT_TRUE(same(detect(image, settings).map, expected));

  std::vector<const char*> names{"eigenVals_f.txt"};
  if (fixedPoint)
    names = {"eigenVals_q.txt", "sobeldx_q.txt", "sobeldy_q.txt", "gradxx_q.txt", "gradyy_q.txt",
             "gradxy_q.txt",    "covarxx_q.txt", "covaryy_q.txt", "covarxy_q.txt"};
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_), {}), std::ptrdiff_t(names.size()));
  for (const char* name : names) ASSERT_EQ(values(name).size(), image.total()) << name;
  const std::vector<double> map = values(names[0]), dx = values("sobeldx_q.txt"), dy = values("sobeldy_q.txt"),
                            xx = values("gradxx_q.txt"), yy = values("gradyy_q.txt"), xy = values("gradxy_q.txt");
  const literal::Response response =
      fixedPoint ? literal::fixedPointResponse(image, {}) : literal::floatResponse(image, {});
  for (std::size_t i = 0; i < image.total(); ++i) {
    const double value = *(response.map.begin() + static_cast<std::ptrdiff_t>(i));
    EXPECT_NEAR(map[i], value, fixedPoint ? 0 : 1e-5 * std::abs(value));  // six digits
    if (!fixedPoint) continue;
    EXPECT_EQ(xx[i], std::floor(dx[i] * dx[i] / 4096));
    EXPECT_EQ(yy[i], std::floor(dy[i] * dy[i] / 4096));
    EXPECT_EQ(xy[i], std::floor(dx[i] * dy[i] / 4096));
  }
}
INSTANTIATE_TEST_SUITE_P(FixedPointCorners, Dumps, testing::Bool(), testing::PrintToStringParamName());

}  // namespace
}  // namespace MirelAlgorithms
