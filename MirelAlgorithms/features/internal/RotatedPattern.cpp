#include <MirelAlgorithms/features/internal/RotatedPattern.h>
#include <MirelAlgorithms/frame/internal/CpuVariant.h>

#include <immintrin.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace MirelAlgorithms {
namespace {

constexpr int pointCount = 2 * orbPattern.size();

// The points in the order of the samples.
struct PatternPoints {
  alignas(32) float x[pointCount];
  alignas(32) float y[pointCount];
};

constexpr PatternPoints patternPoints = [] {
  PatternPoints points{};
  constexpr std::size_t second = orbPattern.size();
  for (std::size_t k = 0; k < orbPattern.size(); ++k) {
    points.x[k] = orbPattern[k].x1, points.y[k] = orbPattern[k].y1;
    points.x[second + k] = orbPattern[k].x2, points.y[second + k] = orbPattern[k].y2;
  }
  return points;
}();

// What turns and stretches: columns a * x - b * y, rows a * y + b * x.
struct Turn {
  float a, b;

  explicit Turn(const cv::KeyPoint& k) {
    constexpr float largest = 1e30f;  // keeps the products finite
    const float size = std::clamp(k.size, -largest, largest);
    const double angle = -k.angle;
    a = static_cast<float>(std::cos(angle)) * size;
    b = static_cast<float>(std::sin(angle)) * size;
  }
};

// Key point and image small enough for 32-bit integers.
struct Placement {
  Turn turn;
  int column, row;          // of the key point
  int lastColumn, lastRow;  // of the image
  int step;                 // bytes between rows
};

using Addressing = void (*)(const Placement& at, std::int32_t* addresses);

void addressBaseline(const Placement& at, std::int32_t* addresses) {
  const __m128 a = _mm_set1_ps(at.turn.a), b = _mm_set1_ps(at.turn.b);
  const __m128i column = _mm_set1_epi32(at.column), row = _mm_set1_epi32(at.row), step = _mm_set1_epi32(at.step);
  const __m128i lastColumn = _mm_set1_epi32(at.lastColumn), lastRow = _mm_set1_epi32(at.lastRow);
  const auto clamped = [](__m128i v, __m128i last) {
    return _mm_min_epi32(_mm_max_epi32(v, _mm_setzero_si128()), last);
  };
  for (int k = 0; k < pointCount; k += 4) {
    const __m128 x = _mm_load_ps(patternPoints.x + k), y = _mm_load_ps(patternPoints.y + k);
    const __m128i dx = _mm_cvtps_epi32(_mm_sub_ps(_mm_mul_ps(a, x), _mm_mul_ps(b, y)));
    const __m128i dy = _mm_cvtps_epi32(_mm_add_ps(_mm_mul_ps(a, y), _mm_mul_ps(b, x)));
    const __m128i u = clamped(_mm_add_epi32(column, dx), lastColumn), v = clamped(_mm_add_epi32(row, dy), lastRow);
    _mm_store_si128(reinterpret_cast<__m128i*>(addresses + k), _mm_add_epi32(_mm_mullo_epi32(v, step), u));
  }
}

MIREL_TARGET_AVX2 inline __m256i clamped(__m256i v, __m256i last) {
  return _mm256_min_epi32(_mm256_max_epi32(v, _mm256_setzero_si256()), last);
}

MIREL_TARGET_AVX2 void addressAvx2(const Placement& at, std::int32_t* addresses) {
  const __m256 a = _mm256_set1_ps(at.turn.a), b = _mm256_set1_ps(at.turn.b);
  const __m256i column = _mm256_set1_epi32(at.column), row = _mm256_set1_epi32(at.row);
  const __m256i lastColumn = _mm256_set1_epi32(at.lastColumn), lastRow = _mm256_set1_epi32(at.lastRow);
  const __m256i step = _mm256_set1_epi32(at.step);
  for (int k = 0; k < pointCount; k += 8) {
    const __m256 x = _mm256_load_ps(patternPoints.x + k), y = _mm256_load_ps(patternPoints.y + k);
    const __m256i dx = _mm256_cvtps_epi32(_mm256_sub_ps(_mm256_mul_ps(a, x), _mm256_mul_ps(b, y)));
    const __m256i dy = _mm256_cvtps_epi32(_mm256_add_ps(_mm256_mul_ps(a, y), _mm256_mul_ps(b, x)));
    const __m256i u = clamped(_mm256_add_epi32(column, dx), lastColumn),
                  v = clamped(_mm256_add_epi32(row, dy), lastRow);
    _mm256_store_si256(reinterpret_cast<__m256i*>(addresses + k), _mm256_add_epi32(_mm256_mullo_epi32(v, step), u));
  }
}

void sampleSmall(const cv::Mat& image, const Placement& at, OrbSamples& samples) {
  alignas(32) std::int32_t addresses[pointCount];
  const Addressing address = cpuVariant() >= CpuVariant::avx2 ? addressAvx2 : addressBaseline;
  address(at, addresses);
  const std::uint8_t* pixels = image.data;
  constexpr std::size_t pairs = orbPattern.size();
  for (std::size_t k = 0; k < pairs; ++k) samples.first[k] = pixels[addresses[k]];
  for (std::size_t k = 0; k < pairs; ++k) samples.second[k] = pixels[addresses[pairs + k]];
}

// Any key point on any image.
void sampleLarge(const cv::Mat& image, const cv::KeyPoint& keyPoint, const Turn& turn, OrbSamples& samples) {
  const double column = std::rint(keyPoint.pt.x), row = std::rint(keyPoint.pt.y);
  const auto sample = [&](int k) {
    const float x = patternPoints.x[k], y = patternPoints.y[k];
    const double u = column + std::rint(turn.a * x - turn.b * y), v = row + std::rint(turn.a * y + turn.b * x);
    return image.at<std::uint8_t>(static_cast<int>(std::clamp(v, 0.0, image.rows - 1.0)),
                                  static_cast<int>(std::clamp(u, 0.0, image.cols - 1.0)));
  };
  constexpr int pairs = orbPattern.size();
  for (int k = 0; k < pairs; ++k) samples.first[k] = sample(k), samples.second[k] = sample(pairs + k);
}

bool isSmall(const cv::Mat& image, const cv::KeyPoint& k) {
  constexpr float farthest = 1 << 24, largest = 1 << 20;
  constexpr std::size_t mostBytes = 1u << 31;
  return std::abs(k.pt.x) <= farthest && std::abs(k.pt.y) <= farthest && std::abs(k.size) <= largest &&
         image.rows * image.step[0] <= mostBytes;
}

}  // namespace

void sampleRotatedPattern(const cv::Mat& image, const cv::KeyPoint& keyPoint, OrbSamples& samples) {
  const Turn turn(keyPoint);
  if (!isSmall(image, keyPoint)) return sampleLarge(image, keyPoint, turn, samples);
  const int column = static_cast<int>(std::rint(keyPoint.pt.x)), row = static_cast<int>(std::rint(keyPoint.pt.y));
  const int step = static_cast<int>(image.step[0]);
  sampleSmall(image, {turn, column, row, image.cols - 1, image.rows - 1, step}, samples);
}

}  // namespace MirelAlgorithms
