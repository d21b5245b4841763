#include <MirelAlgorithms/features/internal/EigenValue.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "LiteralCorners.h"
#include "support/ThrownText.h"

namespace MirelAlgorithms {
namespace {

int shiftOf(int value, int bits) {
  std::vector<int> values{value};
  return syncRescaleFpga(values, bits);
}

TEST(SyncRescale, followsTheLogarithmForEveryValueOfAStage) {
  for (int bits = 2; bits <= 17; ++bits)
    for (int value = -40000; value <= 40000; ++value)
      ASSERT_EQ(shiftOf(value, bits), literal::needOf(value, bits)) << value << " in " << bits << " bits";
}

TEST(SyncRescale, followsTheLogarithmAtEveryStepUpToTheLargestIntegers) {
  for (int bits = 2; bits <= 31; ++bits)
    for (int shift = 0; shift <= 31; ++shift)
      for (const double limit : {std::ldexp(1.0, bits - 1) - 1.0, std::ldexp(1.0, bits - 1)})
        for (int off = -2; off <= 2; ++off)
          for (const double sign : {-1.0, 1.0}) {
            const double value = sign * (std::ldexp(limit, shift) + off);
            if (std::abs(value) > 2147483647.0) continue;
            ASSERT_EQ(shiftOf(static_cast<int>(value), bits), literal::needOf(value, bits)) << value << " in " << bits;
          }
  EXPECT_EQ(shiftOf((std::numeric_limits<int>::min)(), 31), 1);
  EXPECT_EQ(shiftOf(4095, 12), 2);  // not the smallest shift that fits
}

TEST(SyncRescale, shiftsAllValuesAlikeTowardsMinusInfinity) {
  std::vector<int> values{5000, -3, 7, -5000};
  EXPECT_EQ(syncRescaleFpga(values, 12), 2);
  EXPECT_EQ(values, (std::vector<int>{1250, -1, 1, -1250}));
  std::vector<int> none;
  EXPECT_EQ(syncRescaleFpga(none, 12), 0);
}

TEST(SyncRescale, refusesWidths) {
  std::vector<int> values{1};
  EXPECT_EQ(thrownText<std::invalid_argument>([&] { syncRescaleFpga(values, 32); }),
            "syncRescaleFpga: numBits must not exceed 31, found 32");
  EXPECT_EQ(thrownText<std::invalid_argument>([&] { syncRescaleFpga(values, 1); }),
            "syncRescaleFpga: numBits: 1 given, 2 to 31 expected");
  EXPECT_EQ(values[0], 1);
}

struct Pixel {
  int xx, yy, xy;
};

/// Response of one pixel as stored, and the value that the stage returns.
std::pair<int, double> responseOf(const Pixel& p, int inWidth, int outWidth) {
  const cv::Mat xx(1, 1, CV_32SC1, cv::Scalar(p.xx)), yy(1, 1, CV_32SC1, cv::Scalar(p.yy)),
      xy(1, 1, CV_32SC1, cv::Scalar(p.xy));
  cv::Mat out;
  const double largest = calcMinEigenValue(xx, yy, xy, out, inWidth, outWidth);
  return {out.at<int>(0), largest};
}

TEST(MinEigenValue, singlePixels) {
  const struct {
    Pixel pixel;
    int in, out, stored;
    double largest;
  } cases[] = {
      {{100, 50, 0}, 12, 12, 100, 100.0},                              // twice the smaller eigenvalue
      {{100, 50, 20}, 12, 12, 86, 86.0},                               // 150 - sqrt(4100) = 85.97
      {{100, 50, -20}, 12, 12, 86, 86.0},                              //
      {{100, 100, 100}, 12, 12, 0, 0.0},                               // an edge
      {{100, 50, 90}, 12, 12, 0, 0.0},                                 // below 0
      {{4095, 4095, 0}, 12, 16, 8184, 8184.0},                         // shifted by 2 and back: 2 * 1023 * 4
      {{2047, 2047, 0}, 12, 12, 4094, 4094.0},                         //
      {{2047, 2047, 0}, 12, 11, 2047, 4094.0},                         // saturated; the maximum is not
      {{1 << 30, 1 << 30, 0}, 31, 31, 2147483647, 2147483648.0},       //
      {{1 << 30, 1 << 30, 0}, 31, 32, -2147483647 - 1, 2147483648.0},  // the sign bit is a value bit
      {{2147483647, 2147483647, 0}, 31, 32, -8, 4294967288.0},         // unsigned bits
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.pixel.xx << ' ' << c.pixel.yy << ' ' << c.pixel.xy << ' ' << c.in);
    const auto [stored, largest] = responseOf(c.pixel, c.in, c.out);
    EXPECT_EQ(stored, c.stored);
    EXPECT_EQ(largest, c.largest);
  }
}

TEST(MinEigenValue, refusals) {
  const cv::Mat ints(2, 3, CV_32SC1, cv::Scalar(1)), wide(2, 4, CV_32SC1, cv::Scalar(1)), floats(2, 3, CV_32FC1);
  cv::Mat out(1, 1, CV_8UC1, cv::Scalar(7));
  const auto call = [&](const cv::Mat& xx, const cv::Mat& yy, const cv::Mat& xy, int in, int outWidth) {
    return thrownText<std::invalid_argument>([&] { calcMinEigenValue(xx, yy, xy, out, in, outWidth); });
  };
  EXPECT_EQ(call(ints, wide, ints, 12, 12), "All input matrices must have the same size");
  EXPECT_EQ(call(ints, ints, floats, 12, 12), "All input matrices must have depth CV32_S");
  EXPECT_EQ(call(ints, ints, ints, 12, 33), "In calcMinEigenValue(..): outWidth must not exceed 32, found 33");
  EXPECT_EQ(call(ints, ints, ints, 12, 0), "calcMinEigenValue: outWidth: 0 given, 1 to 32 expected");
  EXPECT_EQ(call(ints, ints, ints, 40, 12), "syncRescaleFpga: numBits must not exceed 31, found 40");
  EXPECT_EQ(out.at<uchar>(0), 7);
}

TEST(MinEigenValue, noPixels) {
  cv::Mat none(0, 0, CV_32SC1), out;
  EXPECT_EQ(calcMinEigenValue(none, none, none, out, 12, 12), 0.0);
  EXPECT_TRUE(out.empty());
}

}  // namespace
}  // namespace MirelAlgorithms
