#include <MirelAlgorithms/features/FixedPointCorners.h>
#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <gtest/gtest.h>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>

#include "CornerScenes.h"
#include "LiteralCorners.h"
#include "support/LogCapture.h"

namespace MirelAlgorithms {
namespace {

using Container = SmartPtr<AttrContainer>;

/// Settings without enhancement, which other functions do.
Container plainSettings(bool fixedPoint) {
  Container container(new AttrContainer());
  container->set(L"FBMEnhancement", 0);
  container->set(L"FBMFpgaQuantized", fixedPoint);
  return container;
}

Container containerOf(const literal::Settings& s, bool fixedPoint) {
  Container container = plainSettings(fixedPoint);
  container->set(L"FBMBlockSize", s.block);
  container->set(L"FBMSobelSize", s.aperture);
  container->set(L"FBMLumaLeftShift", s.lumaShift);
  container->set(L"FBMEigenValWidthOut", s.eigenOut);
  container->set(L"FBMExtractionModel", std::wstring(s.test.begin(), s.test.end()).c_str());
  container->set(L"FBMnCells", s.cells);
  container->set(L"FBMnFeatures", s.budget);
  container->set(L"FBMUseAutoThreshold", s.autoThreshold);
  return container;
}

struct Result {
  cv::Mat features, map;
};

Result detect(const cv::Mat& image, const Container& settings) {
  Result result;
  const auto map = std::make_shared<cv::Mat>();
  EXPECT_TRUE(retrieveFeaturesFPGA(image, result.features, settings, map));
  result.map = *map;
  cv::Mat withoutMap;
  EXPECT_TRUE(retrieveFeaturesFPGA(image, withoutMap, settings, nullptr));
  EXPECT_EQ(withoutMap.rows, result.features.rows);
  EXPECT_TRUE(withoutMap.empty() || std::memcmp(withoutMap.data, result.features.data, withoutMap.total() * 20) == 0);
  return result;
}

void expectEqual(const std::vector<cv::KeyPoint>& expected, const cv::Mat& features) {
  ASSERT_EQ(static_cast<int>(expected.size()), features.rows);
  if (features.empty()) return;
  ASSERT_EQ(features.type(), CV_32FC(5));
  ASSERT_EQ(features.cols, 1);
  for (int i = 0; i < features.rows; ++i) {
    const cv::KeyPoint& k = expected[i];
    const float fields[] = {k.pt.x, k.pt.y, k.size, k.angle, k.response};
    ASSERT_EQ(std::memcmp(fields, features.ptr(i), sizeof fields), 0) << "feature " << i;
  }
}

void expectDefinition(const cv::Mat& image, const literal::Settings& settings, bool fixedPoint) {
  const literal::Response response =
      fixedPoint ? literal::fixedPointResponse(image, settings) : literal::floatResponse(image, settings);
  const cv::Mat_<float> map = literal::normalised(response);
  const Result result = detect(image, containerOf(settings, fixedPoint));
  ASSERT_EQ(result.map.type(), CV_32FC1);
  ASSERT_EQ(result.map.size(), map.size());
  EXPECT_EQ(std::memcmp(result.map.data, map.data, map.total() * sizeof(float)), 0);
  expectEqual(literal::select(literal::candidates(map, settings.test), image.size(), settings), result.features);
}

TEST(FixedPointCorners, agreeWithTheDefinition) {
  std::vector<std::function<void(literal::Settings&)>> changes = {
      [](auto&) {},
      [](auto& s) { s.test = "AverageRingMask"; },
      [](auto& s) { s.test = "anything else"; },
      [](auto& s) {
        s.autoThreshold = true;
        s.budget = 40;
      },
      [](auto& s) {
        s.cells = 4;
        s.budget = 50;
      },
      [](auto& s) {
        s.cells = 1;
        s.budget = 7;
      },
      [](auto& s) {
        s.cells = 7;
        s.budget = 1000000;
      },
      [](auto& s) {
        s.block = 4;
        s.aperture = 5;
      },
      [](auto& s) { s.lumaShift = 11; },
      [](auto& s) {
        s.eigenOut = 8;
        s.test = "weighted";
      },  // many equal values
      [](auto& s) { s.eigenOut = 32; },
  };
  for (std::size_t i = 0; i < changes.size(); ++i)
    for (const bool fixedPoint : {false, true}) {
      SCOPED_TRACE(testing::Message() << "change " << i << (fixedPoint ? ", fixed point" : ""));
      literal::Settings settings;
      changes[i](settings);
      expectDefinition(cornerScene(150, 203, i), settings, fixedPoint);
      expectDefinition(harshNoise(64, 48, i), settings, fixedPoint);
    }
}

// Periodic pictures: candidates of equal response, and maxima on plateaus.
TEST(FixedPointCorners, agreeWithTheDefinitionOnTies) {
  cv::Mat board(120, 130, CV_8UC1);
  for (int y = 0; y < board.rows; ++y)
    for (int x = 0; x < board.cols; ++x) board.at<uchar>(y, x) = (x / 10 + y / 10) % 2 == 0 ? 30 : 200;
  for (const char* test : {"SingleMaximum7x7Patch", "AverageRingMask", "weighted"})
    for (const bool fixedPoint : {false, true}) {
      SCOPED_TRACE(testing::Message() << test << fixedPoint);
      literal::Settings settings;
      settings.test = test;
      expectDefinition(board, settings, fixedPoint);
    }
}

TEST(FixedPointCorners, sizesAroundTheSmallestWithFeatures) {
  for (const int rows : {1, 2, 16, 17, 18, 25})
    for (const int cols : {1, 4, 16, 17, 24})
      for (const bool fixedPoint : {false, true}) {
        SCOPED_TRACE(testing::Message() << rows << " x " << cols << (fixedPoint ? " fixed" : ""));
        cv::Mat image = cornerScene(rows, cols, 5);
        if (rows > 1 && cols > 1) expectDefinition(image, literal::Settings(), fixedPoint);
        const Result result = detect(image, plainSettings(fixedPoint));
        EXPECT_TRUE(result.features.empty() || (rows >= 17 && cols >= 17));
      }
}

TEST(FixedPointCorners, flatImagesHaveNone) {
  for (const bool fixedPoint : {false, true})
    for (const char* test : {"SingleMaximum7x7Patch", "AverageRingMask", "weighted"}) {
      literal::Settings settings;
      settings.test = test;
      const cv::Mat image(50, 60, CV_8UC1, cv::Scalar(0));
      const Result result = detect(image, containerOf(settings, fixedPoint));
      EXPECT_TRUE(result.features.empty());
      ASSERT_EQ(result.map.size(), image.size());
      ASSERT_EQ(result.map.type(), CV_32FC1);
      EXPECT_EQ(cv::countNonZero(result.map), 0);
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
  const Container filtered = plainSettings(false);
  filtered->set(L"UseBilateralFilter", true);
  EXPECT_TRUE(retrieveFeaturesFPGA(image, features, filtered, nullptr));
  expectEqual(expected(median), features);
}

TEST(FixedPointCorners, viewsOfLargerImages) {
  const cv::Mat large = cornerScene(90, 120, 2);
  const cv::Mat view = large(cv::Rect(3, 5, 77, 61));
  for (const bool fixedPoint : {false, true}) {
    const Result of = detect(view, plainSettings(fixedPoint)), copy = detect(view.clone(), plainSettings(fixedPoint));
    EXPECT_GT(of.features.rows, 0);
    EXPECT_EQ(cv::norm(of.map, copy.map, cv::NORM_INF), 0.0);
  }
  EXPECT_EQ(cv::norm(large, cornerScene(90, 120, 2), cv::NORM_INF), 0.0);  // the input keeps its bytes
}

TEST(FixedPointCorners, anyNumberOfThreadsAndInstructionSets) {
  const cv::Mat image = cornerScene(300, 280, 6);
  for (const bool fixedPoint : {false, true}) {
    const Result expected = detect(image, plainSettings(fixedPoint));
    const auto expectSame = [&] {
      const Result result = detect(image, plainSettings(fixedPoint));
      EXPECT_EQ(cv::norm(result.map, expected.map, cv::NORM_INF), 0.0);
      ASSERT_EQ(result.features.rows, expected.features.rows);
      EXPECT_EQ(std::memcmp(result.features.data, expected.features.data, expected.features.total() * 20), 0);
    };
    for (const int threads : {1, 2, 3, 8}) {
      const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, threads);
      expectSame();
      tbb::parallel_for(0, 8, [&](int) { expectSame(); });  // from tasks that nest
    }
    limitCpuVariant(CpuVariant::baseline);
    expectSame();
    limitCpuVariant(CpuVariant::avx512);
  }
}

class Dumps : public testing::Test {
 protected:
  Dumps() { std::filesystem::create_directories(folder_); }
  ~Dumps() override { std::filesystem::remove_all(folder_); }

  Container settings(bool fixedPoint) const {
    const Container container = plainSettings(fixedPoint);
    const std::string prefix = (folder_ / "x_").string();
    container->set(L"FBMWorkDir", std::wstring(prefix.begin(), prefix.end()).c_str());
    return container;
  }

  std::vector<double> values(const char* name) const {
    std::ifstream file(folder_ / (std::string("x_") + name));
    return {std::istream_iterator<double>(file), {}};
  }

  std::size_t files() const {
    return std::distance(std::filesystem::directory_iterator(folder_), std::filesystem::directory_iterator());
  }

  // One folder a test: tests run side by side.
  const std::filesystem::path folder_ =
      std::filesystem::path(testing::TempDir()) /
      (std::string("corner dumps ") + testing::UnitTest::GetInstance()->current_test_info()->name());
};

TEST_F(Dumps, ofAllStages) {
  const cv::Mat image = cornerScene(30, 33, 4);
  const Result expected = detect(image, settings(true));
  EXPECT_EQ(files(), 0u);
  const Container all = settings(true);
  for (const wchar_t* key : {L"FBMWriteSobel", L"FBMWriteGradMult", L"FBMWriteCovar", L"FBMWriteEigenvals"})
    all->set(key, true);
  expectDefinition(image, literal::Settings(), true);
  const Result result = detect(image, all);
  EXPECT_EQ(cv::norm(result.map, expected.map, cv::NORM_INF), 0.0);
  EXPECT_EQ(files(), 9u);
  for (const char* name : {"sobeldx_q.txt", "sobeldy_q.txt", "gradxx_q.txt", "gradyy_q.txt", "gradxy_q.txt",
                           "covarxx_q.txt", "covaryy_q.txt", "covarxy_q.txt", "eigenVals_q.txt"})
    EXPECT_EQ(values(name).size(), image.total()) << name;

  const std::vector<double> dx = values("sobeldx_q.txt"), dy = values("sobeldy_q.txt"), xx = values("gradxx_q.txt"),
                            yy = values("gradyy_q.txt"), xy = values("gradxy_q.txt"), map = values("eigenVals_q.txt");
  const literal::Response response = literal::fixedPointResponse(image, literal::Settings());
  for (std::size_t i = 0; i < image.total(); ++i) {
    EXPECT_EQ(xx[i], std::floor(dx[i] * dx[i] / 4096));
    EXPECT_EQ(yy[i], std::floor(dy[i] * dy[i] / 4096));
    EXPECT_EQ(xy[i], std::floor(dx[i] * dy[i] / 4096));
    EXPECT_EQ(map[i], *(response.map.begin() + static_cast<std::ptrdiff_t>(i)));
  }
}

TEST_F(Dumps, ofTheFloatingPointPath) {
  const cv::Mat image = cornerScene(30, 33, 4);
  const Container container = settings(false);
  for (const wchar_t* key : {L"FBMWriteSobel", L"FBMWriteGradMult", L"FBMWriteCovar", L"FBMWriteEigenvals"})
    container->set(key, true);
  detect(image, container);
  EXPECT_EQ(files(), 1u);
  const literal::Response response = literal::floatResponse(image, literal::Settings());
  const std::vector<double> map = values("eigenVals_f.txt");
  ASSERT_EQ(map.size(), image.total());
  for (std::size_t i = 0; i < map.size(); ++i) {
    const double value = *(response.map.begin() + static_cast<std::ptrdiff_t>(i));
    EXPECT_NEAR(map[i], value, 1e-5 * std::abs(value));  // six digits
  }
}

TEST(FixedPointCorners, stagesAreLoggedOnTheirPathOnly) {
  for (const bool fixedPoint : {false, true}) {
    const LogCapture log(1000);
    cv::Mat features;
    retrieveFeaturesFPGA(cornerScene(30, 33, 4), features, plainSettings(fixedPoint), nullptr);
    EXPECT_EQ(log.of("cornerMinEigenValFpga").size(), fixedPoint ? 5u : 0u);
  }
}

}  // namespace
}  // namespace MirelAlgorithms
