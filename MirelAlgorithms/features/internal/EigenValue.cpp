#include <MirelAlgorithms/features/internal/EigenValue.h>
#include <MirelAlgorithms/frame/internal/Require.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace MirelAlgorithms {
namespace {

void requireSyncBits(int numBits) {
  if (numBits > 31)
    throw std::invalid_argument("syncRescaleFpga: numBits must not exceed 31, found " + std::to_string(numBits));
  requireRange("syncRescaleFpga", "numBits", numBits, 2, 31);
}

/// ceil(log2(value / limit)): for 32-bit integers the logarithm rounds across no whole number, so that this is the
/// number of doublings of the limit.
int shiftNeeded(std::int64_t value, int numBits) {
  std::int64_t limit = std::int64_t{1} << (numBits - 1);
  if (value > 0)
    --limit;
  else
    value = -value;
  int shift = 0;
  for (; value > limit; limit *= 2) ++shift;
  return shift;
}

/// Twice the smaller eigenvalue of (a c; c b).
double twiceSmallerEigenValue(double a, double b, double c) {
  const double d = a - b;
  return std::round(a + b - std::sqrt(4.0 * c * c + d * d));
}

}  // namespace

int syncRescaleFpga(std::vector<int>& values, int numBits) {
  requireSyncBits(numBits);
  int shift = 0;
  for (const int value : values) shift = std::max(shift, shiftNeeded(value, numBits));
  for (int& value : values) value = static_cast<int>(std::int64_t{value} >> shift);
  return shift;
}

void requireEigenWidths(int inWidth, int outWidth) {
  if (outWidth > 32)
    throw std::invalid_argument("In calcMinEigenValue(..): outWidth must not exceed 32, found " +
                                std::to_string(outWidth));
  requireRange("calcMinEigenValue", "outWidth", outWidth, 1, 32);
  requireSyncBits(inWidth);
}

double calcMinEigenValue(const cv::Mat& xx, const cv::Mat& yy, const cv::Mat& xy, cv::Mat& out, int inWidth,
                         int outWidth) {
  if (xx.size() != yy.size() || xx.size() != xy.size())
    throw std::invalid_argument("All input matrices must have the same size");
  if (xx.type() != CV_32SC1 || yy.type() != CV_32SC1 || xy.type() != CV_32SC1)
    throw std::invalid_argument("All input matrices must have depth CV32_S");
  requireEigenWidths(inWidth, outWidth);

  const double limit = std::ldexp(1.0, outWidth) - 1.0;
  double largest = 0.0;
  cv::Mat result(xx.size(), CV_32SC1);
  std::vector<int> pixel(3);
  for (int y = 0; y < xx.rows; ++y) {
    const int *rowXx = xx.ptr<int>(y), *rowYy = yy.ptr<int>(y), *rowXy = xy.ptr<int>(y);
    int* row = result.ptr<int>(y);
    for (int x = 0; x < xx.cols; ++x) {
      pixel = {rowXx[x], rowYy[x], rowXy[x]};
      const int shift = syncRescaleFpga(pixel, inWidth);
      const double value = std::ldexp(twiceSmallerEigenValue(pixel[0], pixel[1], pixel[2]), shift);
      largest = std::max(largest, value);
      row[x] = value > 0.0 ? static_cast<int>(static_cast<std::uint32_t>(std::min(value, limit))) : 0;
    }
  }
  out = result;
  return largest;
}

}  // namespace MirelAlgorithms
