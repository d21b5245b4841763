/// Minimum-eigenvalue stage of the fixed-point response map.
#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

namespace MirelAlgorithms {

/// Shifts all values right by one common amount, rounding down, so that each fits a signed `numBits`, and returns it.
///
/// The amount is the largest that any value needs: none inside [-2^(n-1), 2^(n-1) - 1], ceil(log2(x / (2^(n-1) - 1)))
/// above and ceil(log2(x / -2^(n-1))) below. That may be one more than the value alone would need (4095 in 12 bits: 2).
///
/// @param numBits  2 to 31, else `std::invalid_argument`
int syncRescaleFpga(std::vector<int>& values, int numBits);

/// Twice the smaller eigenvalue of the symmetric 2x2 matrix (xx xy; xy yy) of every pixel.
///
///     s = common shift of xx, yy, xy to `inWidth`
///     v = round(xx + yy - sqrt(4 xy^2 + (xx - yy)^2)) * 2^s     0 when that is not positive
///
/// @param xx        CV_32SC1
/// @param yy        same type and size
/// @param xy        same type and size
/// @param out       CV_32SC1: v, at most 2^outWidth - 1; a width of 32 uses the sign bit as a value bit
/// @param inWidth   2 to 31
/// @param outWidth  1 to 32
/// @return          largest v before saturation, 0 for no pixels
///
/// Everything else: `std::invalid_argument`, `out` untouched.
double calcMinEigenValue(const cv::Mat& xx, const cv::Mat& yy, const cv::Mat& xy, cv::Mat& out, int inWidth,
                         int outWidth);

/// Throws what `calcMinEigenValue` throws for these widths.
void requireEigenWidths(int inWidth, int outWidth);

}  // namespace MirelAlgorithms
