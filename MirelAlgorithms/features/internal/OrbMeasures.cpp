#include <MirelAlgorithms/features/internal/OrbMeasures.h>

#include <immintrin.h>

#include <cmath>
#include <opencv2/core/fast_math.hpp>
#include <opencv2/core/utility.hpp>

namespace MirelAlgorithms {
namespace {

constexpr int window = 7;

int rowHalfWidth(int radius, int row) { return cvRound(std::sqrt(static_cast<double>(radius) * radius - row * row)); }

float sumOf(__m128i v) {
  v = _mm_add_epi32(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(1, 0, 3, 2)));
  v = _mm_add_epi32(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(2, 3, 0, 1)));
  return static_cast<float>(_mm_cvtsi128_si32(v));
}

}  // namespace

// The Sobel gradients separate: along a row either the difference of the neighbours or the sum weighted 1 2 1, and
// across the rows the other one. Columns -3 to 3 sit side by side, the eighth number is of no use.
float harrisResponse(const uchar* centre, std::ptrdiff_t step) {
  const __m128i used = _mm_setr_epi16(-1, -1, -1, -1, -1, -1, -1, 0);
  __m128i differences[window + 2], sums[window + 2];
  for (int i = 0; i < window + 2; ++i) {
    const uchar* row = centre + (i - window / 2 - 1) * step;
    const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(row - 3));
    const __m128i left = _mm_cvtepu8_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(row - 4)));
    const __m128i middle = _mm_cvtepu8_epi16(bytes), right = _mm_cvtepu8_epi16(_mm_srli_si128(bytes, 1));
    differences[i] = _mm_and_si128(_mm_sub_epi16(right, left), used);
    sums[i] = _mm_and_si128(_mm_add_epi16(_mm_add_epi16(left, right), _mm_add_epi16(middle, middle)), used);
  }
  __m128i xx = _mm_setzero_si128(), yy = xx, xy = xx;
  for (int i = 1; i <= window; ++i) {
    const __m128i twice = _mm_add_epi16(differences[i], differences[i]);
    const __m128i dx = _mm_add_epi16(_mm_add_epi16(differences[i - 1], differences[i + 1]), twice);
    const __m128i dy = _mm_sub_epi16(sums[i + 1], sums[i - 1]);
    xx = _mm_add_epi32(xx, _mm_madd_epi16(dx, dx));
    yy = _mm_add_epi32(yy, _mm_madd_epi16(dy, dy));
    xy = _mm_add_epi32(xy, _mm_madd_epi16(dx, dy));
  }
  constexpr float k = 0.04f;
  constexpr float scale = 1.0f / (4 * window * 255.0f);
  const float a = sumOf(xx), b = sumOf(yy), c = sumOf(xy);
  return (a * b - c * c - k * (a + b) * (a + b)) * (scale * scale * scale * scale);
}

// Symmetric: what the upper octant has at (row, column), the lower one has at (column, row).
std::vector<int> discHalfWidths(int radius) {
  const int diagonal = cvCeil(static_cast<float>(radius) * std::sqrt(2.0f) / 2.0f);
  std::vector<int> halfWidths;
  for (int row = 0; row <= radius; ++row) {
    int halfWidth = row < diagonal ? rowHalfWidth(radius, row) : 0;
    if (row >= diagonal)
      while (halfWidth < radius && rowHalfWidth(radius, halfWidth + 1) >= row) ++halfWidth;
    halfWidths.push_back(halfWidth);
  }
  return halfWidths;
}

float intensityCentroidAngle(const uchar* centre, std::ptrdiff_t step, const std::vector<int>& halfWidths) {
  int momentX = 0, momentY = 0;
  for (int x = -halfWidths[0]; x <= halfWidths[0]; ++x) momentX += x * centre[x];
  for (int y = 1; y < static_cast<int>(halfWidths.size()); ++y) {
    const uchar *above = centre - y * step, *below = centre + y * step;
    int difference = 0;
    for (int x = -halfWidths[y]; x <= halfWidths[y]; ++x) {
      difference += below[x] - above[x];
      momentX += x * (below[x] + above[x]);
    }
    momentY += y * difference;
  }
  return cv::fastAtan2(static_cast<float>(momentY), static_cast<float>(momentX));
}

}  // namespace MirelAlgorithms
