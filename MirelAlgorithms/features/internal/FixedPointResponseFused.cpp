#include <MirelAlgorithms/features/internal/FixedPointResponse.h>
#include <MirelAlgorithms/features/internal/RowBands.h>
#include <MirelAlgorithms/frame/internal/CpuVariant.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

// The stages run row by row. Of the products, the rows of one block height are kept; their sums over a column of the
// block slide down the image, and blocks are summed along the row from those:
//
//     image rows y-1..y+1  ->  dx, dy  ->  dx*dx, dy*dy, dx*dy  (ring of rows)
//                                              |
//                          column sums: + new row - old row  ->  block sums  ->  shift, eigenvalue  ->  response row
//
// As the gradient is linear, luma shift and gradient shift are one shift of the gradient of the 8-bit image.

namespace MirelAlgorithms {
namespace {

constexpr int largestSteps = 3;

/// Everything the row kernels need, in integers.
struct FusedStages {
  int rows, cols;
  int aperture, block;
  int gradientLeft, gradientRight;  ///< shifts of the 8-bit image's gradient; one of them is 0
  int productShift, blockShift;
  int eigenBits;   ///< signed width that block sums are shifted to
  int eigenSteps;  ///< most that a pixel is shifted by
  int responseLimit;
};

/// Largest magnitudes behind each stage, in doubles because they may be far out of range.
struct WorstCase {
  double gradient, product, unshiftedBlock, block;

  explicit WorstCase(const FixedPointStages& s) {
    const auto shifted = [](double value, int shift) { return std::ceil(std::ldexp(value, -shift)); };
    gradient = shifted(std::ldexp(255.0, s.width.lumaShift) * sobelGain(s.aperture), s.sobelShift);
    product = shifted(gradient * gradient, s.productShift);
    unshiftedBlock = product * s.block * s.block;
    block = shifted(unshiftedBlock, s.blockShift);
  }

  /// Doublings of 2^(bits - 1) - 1 that reach every block sum.
  int eigenSteps(int bits) const {
    const double most = std::ldexp(1.0, bits - 1) - 1.0;
    int steps = 0;
    while (std::ldexp(most, steps) < block) ++steps;
    return steps;
  }
};

FusedStages fusedStages(const cv::Mat& image, const FixedPointStages& s) {
  const int left = s.width.lumaShift - s.sobelShift;
  return {image.rows,
          image.cols,
          s.aperture,
          s.block,
          std::max(left, 0),
          std::max(-left, 0),
          s.productShift,
          s.blockShift,
          s.width.eigenWidthIn,
          WorstCase(s).eigenSteps(s.width.eigenWidthIn),
          (1 << s.width.eigenWidthOut) - 1};
}

int reflected(int i, int n) { return i < 0 ? -i : i >= n ? 2 * (n - 1) - i : i; }

// Row kernels -------------------------------------------------------------------------------------------------------

/// Column of five (aperture 3: the inner three) grey values to what the row filters take: smoothed, and differentiated.
template <int aperture>
MIREL_ALWAYS_INLINE void filterColumns(const uchar* const* p, int n, std::int16_t* __restrict smooth,
                                       std::int16_t* __restrict slope) {
  const uchar *p0 = p[0], *p1 = p[1], *p2 = p[2], *p3 = p[3], *p4 = p[4];
  for (int x = 0; x < n; ++x) {
    if constexpr (aperture == 3) {
      smooth[x] = static_cast<std::int16_t>(p1[x] + 2 * p2[x] + p3[x]);
      slope[x] = static_cast<std::int16_t>(p3[x] - p1[x]);
    } else {
      smooth[x] = static_cast<std::int16_t>(p0[x] + p4[x] + 4 * (p1[x] + p3[x]) + 6 * p2[x]);
      slope[x] = static_cast<std::int16_t>(p4[x] - p0[x] + 2 * (p3[x] - p1[x]));
    }
  }
}

/// Gradient of a row, shifted to its stage's width, and its products.
template <int aperture>
MIREL_ALWAYS_INLINE void multiplyGradients(const std::int16_t* __restrict smooth, const std::int16_t* __restrict slope,
                                           int n, const FusedStages& s, int* __restrict xx, int* __restrict yy,
                                           int* __restrict xy) {
  const int left = s.gradientLeft, right = s.gradientRight, shift = s.productShift;
  for (int x = 0; x < n; ++x) {
    int dx, dy;
    if constexpr (aperture == 3) {
      dx = smooth[x + 1] - smooth[x - 1];
      dy = slope[x - 1] + 2 * slope[x] + slope[x + 1];
    } else {
      dx = smooth[x + 2] - smooth[x - 2] + 2 * (smooth[x + 1] - smooth[x - 1]);
      dy = slope[x - 2] + slope[x + 2] + 4 * (slope[x - 1] + slope[x + 1]) + 6 * slope[x];
    }
    dx = dx * (1 << left) >> right;
    dy = dy * (1 << left) >> right;
    xx[x] = dx * dx >> shift;
    yy[x] = dy * dy >> shift;
    xy[x] = dx * dy >> shift;
  }
}

MIREL_ALWAYS_INLINE void slideColumns(const int* __restrict added, const int* __restrict removed, int n,
                                      int* __restrict columns) {
  for (int x = 0; x < n; ++x) columns[x] += added[x] - removed[x];
}

/// Sums of `block` neighbouring column sums around x, shifted.
template <int block>
MIREL_ALWAYS_INLINE void sumBlocks(const int* __restrict columns, int n, int shift, int* __restrict sums) {
  for (int x = 0; x < n; ++x) {
    int sum = 0;
    for (int i = -(block / 2); i <= block / 2; ++i) sum += columns[x + i];
    sums[x] = sum >> shift;
  }
}

/// Response of a row, as `calcMinEigenValue`; the largest before saturation.
///
/// The square root q of the integer m is rounded by k = floor of its single-precision value, which is at most one unit
/// in the last place off, and m > k^2 + k, which is q > k + 1/2.
template <int steps>
MIREL_ALWAYS_INLINE int minEigenValues(const int* __restrict xx, const int* __restrict yy, const int* __restrict xy,
                                       int n, const FusedStages& s, float* __restrict response) {
  const int most = (1 << (s.eigenBits - 1)) - 1, least = -most - 1, limit = s.responseLimit;
  int largest = 0;
  for (int x = 0; x < n; ++x) {
    int a = xx[x], b = yy[x], c = xy[x];
    const int high = std::max(std::max(a, b), c), low = c;
    bool shifted[largestSteps] = {};
    for (int i = 0; i < steps; ++i) {
      shifted[i] = (high > most * (1 << i)) | (low < least * (1 << i));
      a = shifted[i] ? a >> 1 : a;
      b = shifted[i] ? b >> 1 : b;
      c = shifted[i] ? c >> 1 : c;
    }
    const int d = a - b, m = 4 * c * c + d * d;
    const int k = static_cast<int>(std::sqrt(static_cast<float>(m)));
    int value = a + b - k - (m > k * k + k ? 1 : 0);
    for (int i = 0; i < steps; ++i) value = shifted[i] ? value * 2 : value;
    value = std::max(value, 0);
    largest = std::max(largest, value);
    response[x] = static_cast<float>(std::min(value, limit));
  }
  return largest;
}

// One band ----------------------------------------------------------------------------------------------------------

/// Rows of three products or sums; each has room for reflected values at both ends.
struct Triple {
  int *xx, *yy, *xy;
};

/// Working memory of a band.
class BandRows {
 public:
  explicit BandRows(const FusedStages& s)
      : ring_(s.block + 1),
        padded_(s.cols + 2 * pad),
        bytes_(s.cols),
        shorts_(2 * padded_),
        ints_(static_cast<std::size_t>(padded_) * 3 * (ring_ + 3)) {}

  const uchar* zeros() const { return bytes_.data(); }
  std::int16_t* smooth() { return shorts_.data() + pad; }
  std::int16_t* slope() { return shorts_.data() + padded_ + pad; }
  Triple products(int row) { return triple(row % ring_); }
  Triple columns() { return triple(ring_); }
  Triple sums() { return triple(ring_ + 1); }
  Triple zeroProducts() { return triple(ring_ + 2); }

 private:
  static constexpr int pad = 8;

  Triple triple(int i) {
    int* first = ints_.data() + static_cast<std::size_t>(padded_) * 3 * i + pad;
    return {first, first + padded_, first + 2 * padded_};
  }

  int ring_, padded_;
  std::vector<uchar> bytes_;
  std::vector<std::int16_t> shorts_;
  std::vector<int> ints_;
};

MIREL_ALWAYS_INLINE void makeProducts(const cv::Mat& image, const FusedStages& s, int row, BandRows& band) {
  std::array<const uchar*, 5> p;
  for (int i = 0; i < 5; ++i) {
    const int y = row + i - 2;
    p[i] = y >= 0 && y < s.rows ? image.ptr(y) : band.zeros();
  }
  std::int16_t *smooth = band.smooth(), *slope = band.slope();
  const Triple out = band.products(row);
  if (s.aperture == 3) {
    filterColumns<3>(p.data(), s.cols, smooth, slope);
    multiplyGradients<3>(smooth, slope, s.cols, s, out.xx, out.yy, out.xy);
  } else {
    filterColumns<5>(p.data(), s.cols, smooth, slope);
    multiplyGradients<5>(smooth, slope, s.cols, s, out.xx, out.yy, out.xy);
  }
}

MIREL_ALWAYS_INLINE void sumBlocksOf(int* columns, const FusedStages& s, int* sums) {
  for (int i = 1; i <= s.block / 2; ++i) {
    columns[-i] = columns[i];
    columns[s.cols - 1 + i] = columns[s.cols - 1 - i];
  }
  if (s.block == 3) sumBlocks<3>(columns, s.cols, s.blockShift, sums);
  if (s.block == 5) sumBlocks<5>(columns, s.cols, s.blockShift, sums);
  if (s.block == 7) sumBlocks<7>(columns, s.cols, s.blockShift, sums);
}

MIREL_ALWAYS_INLINE int responseRow(const Triple& sums, const FusedStages& s, float* out) {
  if (s.eigenSteps == 0) return minEigenValues<0>(sums.xx, sums.yy, sums.xy, s.cols, s, out);
  if (s.eigenSteps == 1) return minEigenValues<1>(sums.xx, sums.yy, sums.xy, s.cols, s, out);
  if (s.eigenSteps == 2) return minEigenValues<2>(sums.xx, sums.yy, sums.xy, s.cols, s, out);
  return minEigenValues<3>(sums.xx, sums.yy, sums.xy, s.cols, s, out);
}

MIREL_ALWAYS_INLINE void slideColumns(const Triple& added, const Triple& removed, int n, const Triple& columns) {
  slideColumns(added.xx, removed.xx, n, columns.xx);
  slideColumns(added.yy, removed.yy, n, columns.yy);
  slideColumns(added.xy, removed.xy, n, columns.xy);
}

/// Column sums of the rows around `row`, made from scratch.
MIREL_ALWAYS_INLINE void startColumns(const cv::Mat& image, const FusedStages& s, int row, BandRows& band) {
  const int half = s.block / 2;
  for (int y = std::max(row - half, 0); y <= std::min(row + half, s.rows - 1); ++y) makeProducts(image, s, y, band);
  for (int i = -half; i <= half; ++i)
    slideColumns(band.products(reflected(row + i, s.rows)), band.zeroProducts(), s.cols, band.columns());
}

/// Column sums of the rows around `row` from those around the row before.
MIREL_ALWAYS_INLINE void advanceColumns(const cv::Mat& image, const FusedStages& s, int row, BandRows& band) {
  const int newest = row + s.block / 2, oldest = row - s.block / 2 - 1;
  if (newest < s.rows) makeProducts(image, s, newest, band);
  slideColumns(band.products(reflected(newest, s.rows)), band.products(reflected(oldest, s.rows)), s.cols,
               band.columns());
}

/// Rows [begin, end) of the response; the largest before saturation.
MIREL_ALWAYS_INLINE int responseBand(const cv::Mat& image, const FusedStages& s, int begin, int end,
                                     cv::Mat& response) {
  BandRows band(s);
  const Triple columns = band.columns(), sums = band.sums();
  int largest = 0;
  startColumns(image, s, begin, band);
  for (int row = begin; row < end; ++row) {
    if (row > begin) advanceColumns(image, s, row, band);
    sumBlocksOf(columns.xx, s, sums.xx);
    sumBlocksOf(columns.yy, s, sums.yy);
    sumBlocksOf(columns.xy, s, sums.xy);
    largest = std::max(largest, responseRow(sums, s, response.ptr<float>(row)));
  }
  return largest;
}

int responseBandBaseline(const cv::Mat& image, const FusedStages& s, int begin, int end, cv::Mat& response) {
  return responseBand(image, s, begin, end, response);
}
MIREL_TARGET_AVX2 int responseBandAvx2(const cv::Mat& image, const FusedStages& s, int begin, int end,
                                       cv::Mat& response) {
  return responseBand(image, s, begin, end, response);
}

}  // namespace

bool canFuse(const cv::Mat& image, const FixedPointStages& s) {
  const StageSettings& width = s.width;
  const bool dumps = width.dumpSobel || width.dumpProducts || width.dumpBlocks;
  const bool blocks = (s.block == 3 || s.block == 5 || s.block == 7) && image.rows >= s.block && image.cols >= s.block;
  if (dumps || !blocks || width.lumaShift < 0 || width.lumaShift > 8) return false;  // from 9 the luma saturates
  if (s.productShift > 31 || s.blockShift > 31 || width.eigenWidthIn > 15 || width.eigenWidthOut > 24) return false;
  const WorstCase worst(s);
  return worst.gradient <= 32767.0 && worst.unshiftedBlock < std::ldexp(1.0, 30) &&
         worst.eigenSteps(width.eigenWidthIn) <= largestSteps;
}

double fusedResponse(const cv::Mat& image, const FixedPointStages& stages, cv::Mat& response) {
  const FusedStages fused = fusedStages(image, stages);
  const auto responseRows = cpuVariant() >= CpuVariant::avx2 ? responseBandAvx2 : responseBandBaseline;
  const RowBands bands(0, image.rows);
  std::vector<int> largest(bands.count());
  response.create(image.size(), CV_32FC1);
  bands.forEach(
      [&](int band, int begin, int end) { largest[band] = responseRows(image, fused, begin, end, response); });
  return *std::max_element(largest.begin(), largest.end());
}

}  // namespace MirelAlgorithms
