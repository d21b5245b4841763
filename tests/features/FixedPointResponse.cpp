#include <MirelAlgorithms/features/internal/FixedPointResponse.h>
#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <gtest/gtest.h>

#include "CornerScenes.h"
#include "LiteralCorners.h"

namespace MirelAlgorithms {
namespace {

FixedPointStages stagesOf(const literal::Settings& s) {
  ResponseSettings response = readSettings<ResponseSettings>(nullptr);
  response.blockSize = s.block;
  response.sobelSize = s.aperture;
  StageSettings width = readSettings<StageSettings>(nullptr);
  width.lumaShift = s.lumaShift;
  width.sobelWidth = s.sobelWidth;
  width.productWidth = s.productWidth;
  width.blockWidth = s.blockWidth;
  width.eigenWidthIn = s.eigenIn;
  width.eigenWidthOut = s.eigenOut;
  return fixedPointStages(response, width);
}

void expectEqual(const literal::Response& expected, const cv::Mat& map, double largest) {
  EXPECT_EQ(expected.largest, largest);
  cv::Mat doubles;
  map.convertTo(doubles, CV_64F);
  ASSERT_EQ(expected.map.size(), doubles.size());
  EXPECT_EQ(cv::norm(expected.map, doubles, cv::NORM_INF), 0.0);
}

// Every form and instruction set gives the values of the definition; tells whether the fused form took part.
bool expectDefinition(const cv::Mat& image, const literal::Settings& settings) {
  SCOPED_TRACE(testing::Message() << image.size() << ' ' << settings);
  const literal::Response expected = literal::fixedPointResponse(image, settings);
  const FixedPointStages stages = stagesOf(settings);
  cv::Mat map;
  double largest = wholeImageResponse(image, stages, map);
  expectEqual(expected, map, largest);
  if (!canFuse(image, stages)) return false;
  for (const CpuVariant variant : {CpuVariant::baseline, CpuVariant::avx2}) {
    limitCpuVariant(variant);
    largest = fusedResponse(image, stages, map);
    expectEqual(expected, map, largest);
  }
  limitCpuVariant(CpuVariant::avx512);
  return true;
}

TEST(FixedPointResponse, defaultWidthsOnAllSizes) {
  for (const cv::Size& size : {cv::Size(5, 5), cv::Size(6, 9), cv::Size(17, 17), cv::Size(40, 130), cv::Size(131, 70)})
    for (const int aperture : {3, 5}) {
      literal::Settings settings;
      settings.aperture = aperture;
      EXPECT_TRUE(expectDefinition(cornerScene(size.height, size.width, 3), settings));
      EXPECT_TRUE(expectDefinition(harshNoise(size.height, size.width, 4), settings));
    }
}

TEST(FixedPointResponse, randomWidths) {
  cv::RNG random(11);
  int fused = 0;
  for (int i = 0; i < 800; ++i) {
    const bool typical = i % 8 < 5;  // widths that the fused form is made for, and some beyond its limits
    const auto width = [&](int least, int end, int typicalLeast, int typicalEnd) {
      return typical ? random.uniform(typicalLeast, typicalEnd) : random.uniform(least, end);
    };
    literal::Settings s;
    s.block = i == 5 ? 255 : typical ? random.uniform(1, 4) * 2 + 1 : random.uniform(1, 9);
    s.aperture = random.uniform(0, 2) == 0 ? 3 : 5;
    s.lumaShift = width(-7, 14, 0, 11);
    s.sobelWidth = width(1, 20, 8, 20);
    s.productWidth = width(1, 30, 8, 30);
    s.eigenIn = width(2, 32, 6, 19);
    s.blockWidth = width(1, 31, s.eigenIn - 3, s.eigenIn + 6);
    s.eigenOut = width(1, 33, 4, 28);
    const int rows = width(1, 40, 7, 90), cols = (typical ? 7 : 1) + i % 60;
    const cv::Mat images[] = {harshNoise(rows, cols, i), cornerScene(rows, cols, i), stripes(rows, cols)};
    fused += expectDefinition(images[i % 3], s);
  }
  EXPECT_GT(fused, 150);
}

}  // namespace
}  // namespace MirelAlgorithms
