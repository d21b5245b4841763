#include <MirelAlgorithms/features/internal/CandidateSearch.h>
#include <MirelAlgorithms/features/internal/QuadraticFit.h>
#include <MirelAlgorithms/features/internal/ResponseOrder.h>
#include <MirelAlgorithms/features/internal/RowBands.h>
#include <MirelAlgorithms/frame/internal/CpuVariant.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace MirelAlgorithms {
namespace {

constexpr int margin = 8;
constexpr int window = 7, half = window / 2;
constexpr double farthestOffset = 1.5;
constexpr float featureSize = 15.0f;

// Row kernels -------------------------------------------------------------------------------------------------------

MIREL_ALWAYS_INLINE float larger(float a, float b) { return a > b ? a : b; }

/// Largest of seven values of each column, for x in [0, n).
MIREL_ALWAYS_INLINE void columnMaxima(const float* const* rows, int n, float* __restrict maxima) {
  const float *r0 = rows[0], *r1 = rows[1], *r2 = rows[2], *r3 = rows[3], *r4 = rows[4], *r5 = rows[5], *r6 = rows[6];
  for (int x = 0; x < n; ++x) {
    const float upper = larger(larger(r0[x], r1[x]), larger(r2[x], r3[x]));
    maxima[x] = larger(upper, larger(larger(r4[x], r5[x]), r6[x]));
  }
}

/// Marks, for x in [0, n), the values that may be maxima once they are scaled: larger than the left neighbour, which no
/// test lets be equal, and as large as the window's maximum but for what scaling may round away.
MIREL_ALWAYS_INLINE void markPeaks(const float* __restrict m, const float* __restrict row, int n,
                                   std::uint8_t* __restrict marks) {
  constexpr float rounding = 1.0f / (1 << 20);
  for (int x = 0; x < n; ++x) {
    const float left = larger(larger(m[x - 3], m[x - 2]), larger(m[x - 1], m[x]));
    const float largest = larger(left, larger(larger(m[x + 1], m[x + 2]), m[x + 3]));
    marks[x] = static_cast<std::uint8_t>((row[x] + rounding * std::abs(row[x]) >= largest) & (row[x] > row[x - 1]));
  }
}

/// The marks of a row of a map; `rows` are the seven around it, `maxima` is working memory. None in the margin.
MIREL_ALWAYS_INLINE void markRow(const float* const* rows, int cols, float* maxima, std::uint8_t* marks) {
  columnMaxima(rows, cols, maxima);
  markPeaks(maxima + margin, rows[half] + margin, cols - 2 * margin, marks + margin);
}

void markRowBaseline(const float* const* rows, int cols, float* maxima, std::uint8_t* marks) {
  markRow(rows, cols, maxima, marks);
}
MIREL_TARGET_AVX2 void markRowAvx2(const float* const* rows, int cols, float* maxima, std::uint8_t* marks) {
  markRow(rows, cols, maxima, marks);
}

// One band of rows --------------------------------------------------------------------------------------------------

/// Candidates of some rows, with the largest values among them.
struct Candidates {
  std::vector<cv::KeyPoint> keyPoints;
  double peak = -std::numeric_limits<double>::infinity();  ///< largest value of a fit at its extremum
  double curvature = 0.0;                                  ///< largest magnitude of an x^2 coefficient

  void add(const Candidates& other) {
    keyPoints.insert(keyPoints.end(), other.keyPoints.begin(), other.keyPoints.end());
    peak = std::max(peak, other.peak);
    curvature = std::max(curvature, other.curvature);
  }
};

/// Search in a band of rows of a map. Only what is marked is scaled and tested.
class BandSearch {
 public:
  BandSearch(const cv::Mat& map, double factor, MaximumTest test)
      : map_(map), factor_(factor), test_(test), maxima_(map.cols), marks_(map.cols) {}

  Candidates run(int begin, int end) {
    for (int y = begin; y < end; ++y) searchRow(y);
    return std::move(found_);
  }

 private:
  void searchRow(int y) {
    const float* rows[window];
    for (int i = 0; i < window; ++i) rows[i] = map_.ptr<float>(y - half + i);
    markRow_(rows, map_.cols, maxima_.data(), marks_.data());
    for (int x = margin; x < map_.cols - margin; x += sizeof(std::uint64_t)) {
      std::uint64_t marks;  // a byte for each pixel; the last ones may be of the margin
      std::memcpy(&marks, &marks_[x], sizeof marks);
      for (int i = x; marks != 0; ++i, marks >>= 8)
        if ((marks & 1) != 0) testPixel(i, y);
    }
  }

  void testPixel(int x, int y) {
    for (int i = 0; i < window; ++i)
      scaleRow(map_.ptr<float>(y - half + i) + x - half, block_.ptr<float>(i), window + 1, factor_);
    if (isMaximum(scaled_, half, half, test_)) add(x, y, fitQuadratic(scaled_, half, half));
  }

  /// Keeps the maximum at (x, y) when its fit's extremum is near.
  void add(int x, int y, const QuadraticFit& fit) {
    const QuadraticFit::Point offset = fit.extremum();
    const auto isNear = [](double d) { return -farthestOffset < d && d < farthestOffset; };
    if (!isNear(offset.x) || !isNear(offset.y)) return;

    const double peak = fit.value(offset);
    found_.peak = std::max(found_.peak, peak);
    found_.curvature = std::max(found_.curvature, std::abs(fit.c[3]));
    found_.keyPoints.emplace_back(static_cast<float>(x + offset.x), static_cast<float>(y + offset.y), featureSize,
                                  static_cast<float>(fit.c[3]), static_cast<float>(peak));
  }

  const cv::Mat& map_;
  const double factor_;
  const MaximumTest test_;
  decltype(&markRowBaseline) const markRow_ = cpuVariant() >= CpuVariant::avx2 ? markRowAvx2 : markRowBaseline;
  std::vector<float> maxima_;
  std::vector<std::uint8_t> marks_;
  cv::Mat block_ = cv::Mat(window, window + 1, CV_32FC1);
  const cv::Mat scaled_ = block_.colRange(0, window);  ///< the window under test: a view, as of a whole map
  Candidates found_;
};

// All rows ----------------------------------------------------------------------------------------------------------

void rescale(Candidates& candidates) {
  const double angleScale = 180.0 / candidates.curvature;
  for (cv::KeyPoint& candidate : candidates.keyPoints) {
    candidate.angle = static_cast<float>(angleScale * candidate.angle);
    candidate.response = static_cast<float>(candidate.response / candidates.peak);
  }
}

}  // namespace

std::vector<cv::KeyPoint> findCandidates(const cv::Mat& map, double factor, MaximumTest test) {
  Candidates all;
  if (map.cols <= 2 * margin) return all.keyPoints;
  const RowBands bands(margin, map.rows - margin);
  std::vector<Candidates> found(bands.count());
  bands.forEach([&](int band, int begin, int end) { found[band] = BandSearch(map, factor, test).run(begin, end); });
  for (const Candidates& some : found) all.add(some);
  rescale(all);
  return strongestFirst(all.keyPoints);
}

}  // namespace MirelAlgorithms
