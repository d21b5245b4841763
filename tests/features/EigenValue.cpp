#include <MirelAlgorithms/features/internal/EigenValue.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>

#include "LiteralCorners.h"
#include "support/ThrownText.h"

namespace MirelAlgorithms {
namespace {

int shiftOf(int value, int bits) {
  std::vector<int> values{value};
  return syncRescaleFpga(values, bits);
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

// Sums that are shifted and shifted back, edges, values below 0, and responses that take 32 bits and more.
TEST(MinEigenValue, equalsTheLiteralValue) {
  constexpr int most = 2147483647;
  for (const auto& [x, y, mixed] : {std::tuple(100, 50, -20),
                                    {100, 50, 90},
                                    {4095, 4095, 0},
                                    {1 << 30, 1 << 30, 0},
                                    {most, most, 0},
                                    {most, 7, -most - 1}})
    for (const int in : {12, 31})
      for (const int out : {11, 31, 32}) {
        const cv::Mat xx(1, 1, CV_32SC1, cv::Scalar(x)), yy(1, 1, CV_32SC1, cv::Scalar(y)),
            xy(1, 1, CV_32SC1, cv::Scalar(mixed));
        cv::Mat response;
        const double expected = literal::eigenValue(x, y, mixed, in);
        EXPECT_EQ(calcMinEigenValue(xx, yy, xy, response, in, out), expected) << x << ' ' << in;
        EXPECT_EQ(response.at<int>(0), literal::stored(expected, out)) << x << ' ' << in << ' ' << out;
      }
}

TEST(MinEigenValue, refusesMatricesThatDiffer) {
  const cv::Mat ints(2, 3, CV_32SC1, cv::Scalar(1)), wide(2, 4, CV_32SC1, cv::Scalar(1)), floats(2, 3, CV_32FC1);
  cv::Mat out;
  const auto call = [&](const cv::Mat& yy, const cv::Mat& xy) {
    return thrownText<std::invalid_argument>([&] { calcMinEigenValue(ints, yy, xy, out, 12, 12); });
  };
  EXPECT_EQ(call(wide, ints), "All input matrices must have the same size");
  EXPECT_EQ(call(ints, floats), "All input matrices must have depth CV32_S");
}

}  // namespace
}  // namespace MirelAlgorithms
