#include <MirelAlgorithms/filters/SavitzkyGolay.h>
#include <MirelAlgorithms/filters/internal/SavitzkyGolayWeights.h>
#include <MirelAlgorithms/frame/internal/CpuVariant.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace MirelAlgorithms {
namespace {

using Index = std::ptrdiff_t;

// out[i] for i < count, from padded[i] to padded[i + width - 1] each. Every value keeps a sum of its own in the order
// of the weights; neighbours share a register. A block of sums stays in the first-level cache while all weights pass
// by.
MIREL_ALWAYS_INLINE void smoothRun(const double* padded, double* out, Index count, const SmoothingWindow& window) {
  constexpr Index block = 512;
  const double reciprocal = 1.0 / window.normaliser;
  double sums[block];
  for (Index begin = 0; begin < count; begin += block) {
    const Index size = std::min(block, count - begin);
    std::fill_n(sums, size, 0.0);
    for (int j = 0; j < window.width; ++j) {
      const double* const shifted = padded + begin + j;
      const double weight = window.weights[static_cast<std::size_t>(j)];
      for (Index k = 0; k < size; ++k) sums[k] += shifted[k] * weight * reciprocal;
    }
    std::copy_n(sums, size, out + begin);
  }
}

void smoothBaseline(const double* padded, double* out, Index count, const SmoothingWindow& window) {
  smoothRun(padded, out, count, window);
}

MIREL_TARGET_AVX2 void smoothAvx2(const double* padded, double* out, Index count, const SmoothingWindow& window) {
  smoothRun(padded, out, count, window);
}

// AVX-512 is no faster: the multiplications are the limit.
void smooth(const double* padded, double* out, Index count, const SmoothingWindow& window) {
  if (cpuVariant() >= CpuVariant::avx2)
    smoothAvx2(padded, out, count, window);
  else
    smoothBaseline(padded, out, count, window);
}

// The series with its mirror images beyond both ends.
double mirrored(const std::vector<double>& in, Index i) {
  const Index last = static_cast<Index>(in.size()) - 1;
  return in[static_cast<std::size_t>(i < 0 ? -i : i > last ? 2 * last - i : i)];
}

// out[begin] to out[end - 1], at most half a window, near an end of the series.
void smoothEnd(const std::vector<double>& in, double* out, Index begin, Index end, const SmoothingWindow& window) {
  const Index half = window.width / 2;
  double padded[2 * SmoothingWindow::widest];
  for (Index i = begin - half; i < end + half; ++i) padded[i - begin + half] = mirrored(in, i);
  smooth(padded, out + begin, end - begin, window);
}

void smoothSeries(const std::vector<double>& in, double* out, const SmoothingWindow& window) {
  const Index size = static_cast<Index>(in.size()), half = window.width / 2;
  const Index head = std::min(half, size), tail = std::max(head, size - half);
  smoothEnd(in, out, 0, head, window);
  if (tail > head) smooth(in.data(), out + head, tail - head, window);
  smoothEnd(in, out, tail, size, window);
}

}  // namespace

bool sgCubicSmoother(std::vector<double>& in, std::vector<double>& out, int window) {
  const SmoothingWindow* const found = findSmoothingWindow(window);
  if (!found || in.size() < static_cast<std::size_t>(window) / 2 + 2) return false;
  if (&in == &out) {
    std::vector<double> smoothed(in.size());
    smoothSeries(in, smoothed.data(), *found);
    out = std::move(smoothed);
    return true;
  }
  out.resize(in.size());
  smoothSeries(in, out.data(), *found);
  return true;
}

}  // namespace MirelAlgorithms
