#include <MirelAlgorithms/features/internal/FeatureMatrix.h>
#include <MirelAlgorithms/features/internal/FixedPointDescriptor.h>
#include <MirelAlgorithms/features/internal/TripletTable.h>
#include <MirelAlgorithms/frame/internal/CpuVariant.h>

#include <immintrin.h>
#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <cstdint>
#include <limits>
#include <opencv2/imgproc.hpp>

namespace MirelAlgorithms {
namespace {

static_assert(tripletTable.size() == 4 * fixedPointDescriptorBytes);

// The smoothed image between rows of zeros, so many that every sample of a feature inside the image finds memory.
class SmoothedImage {
 public:
  explicit SmoothedImage(const cv::Mat& image) {
    const int margin = patchRadius + (patchRadius + image.cols - 1) / image.cols;
    storage_.create(image.rows + 2 * margin, image.cols, CV_32FC1);
    storage_.rowRange(0, margin).setTo(0.0);
    storage_.rowRange(margin + image.rows, storage_.rows).setTo(0.0);
    pixels_ = storage_.rowRange(margin, margin + image.rows);

    cv::Mat asFloat;
    image.convertTo(asFloat, CV_32F);
    const cv::Mat kernel = cv::getGaussianKernel(5, 1.0, CV_64F);
    cv::sepFilter2D(asFloat, pixels_, CV_32F, kernel, kernel, cv::Point(-1, -1), 0.0, cv::BORDER_REFLECT_101);
  }

  int cols() const { return pixels_.cols; }
  const float* data() const { return pixels_.ptr<float>(); }
  bool contains(std::int64_t address) const {
    return address >= 0 && address < std::int64_t{pixels_.rows} * pixels_.cols;
  }
  float at(std::int64_t address) const { return contains(address) ? data()[address] : 0.0f; }

 private:
  cv::Mat storage_, pixels_;
};

// Addresses of the samples relative to the feature's pixel, ordered so that the comparisons come out in bit order:
// outer[2k] and outer[2k + 1] are A and C of triplet k, inner[k] is its B.
struct SampleOffsets {
  alignas(32) std::int32_t outer[2 * tripletTable.size()];
  alignas(32) std::int32_t inner[tripletTable.size()];

  explicit SampleOffsets(int cols) {
    const auto offset = [cols](const PatchPoint& p) { return -(p.dy * cols + p.dx); };
    for (std::size_t k = 0; k < tripletTable.size(); ++k) {
      outer[2 * k] = offset(tripletTable[k].a);
      outer[2 * k + 1] = offset(tripletTable[k].c);
      inner[k] = offset(tripletTable[k].b);
    }
  }

  // Widest image whose offsets fit 32 bits.
  static constexpr int largestCols = (std::numeric_limits<std::int32_t>::max)() / (patchRadius + 1);
};

// `centre` is the feature's pixel; all samples have memory.
using Describe = void (*)(const float* centre, const SampleOffsets& offsets, std::uint8_t* bytes);

void describeBaseline(const float* centre, const SampleOffsets& offsets, std::uint8_t* bytes) {
  const std::int32_t* outer = offsets.outer;
  const std::int32_t* inner = offsets.inner;
  for (int i = 0; i < fixedPointDescriptorBytes; ++i, outer += 8, inner += 4) {
    const auto fourBits = [centre](const std::int32_t* ac, const std::int32_t* b) {
      const __m128 left = _mm_setr_ps(centre[ac[0]], centre[ac[1]], centre[ac[2]], centre[ac[3]]);
      const __m128 right = _mm_setr_ps(centre[b[0]], centre[b[0]], centre[b[1]], centre[b[1]]);
      return _mm_movemask_ps(_mm_cmplt_ps(left, right));
    };
    bytes[i] = static_cast<std::uint8_t>(fourBits(outer, inner) | fourBits(outer + 4, inner + 2) << 4);
  }
}

MIREL_TARGET_AVX2 void describeAvx2(const float* centre, const SampleOffsets& offsets, std::uint8_t* bytes) {
  const __m256i twice = _mm256_setr_epi32(0, 0, 1, 1, 2, 2, 3, 3);
  for (int i = 0; i < fixedPointDescriptorBytes; ++i) {
    const __m256i outer = _mm256_load_si256(reinterpret_cast<const __m256i*>(offsets.outer + 8 * i));
    const __m128i inner = _mm_load_si128(reinterpret_cast<const __m128i*>(offsets.inner + 4 * i));
    const __m256 left = _mm256_i32gather_ps(centre, outer, 4);
    const __m256 b = _mm256_castps128_ps256(_mm_i32gather_ps(centre, inner, 4));
    const __m256 right = _mm256_permutevar8x32_ps(b, twice);
    bytes[i] = static_cast<std::uint8_t>(_mm256_movemask_ps(_mm256_cmp_ps(left, right, _CMP_LT_OQ)));
  }
}

// Any centre, any image: every sample is tested.
void describeChecked(const SmoothedImage& image, std::int64_t centre, std::uint8_t* bytes) {
  const auto sample = [&](const PatchPoint& p) { return image.at(centre - std::int64_t{p.dy} * image.cols() - p.dx); };
  for (std::size_t k = 0; k < tripletTable.size(); ++k) {
    const float a = sample(tripletTable[k].a), b = sample(tripletTable[k].b), c = sample(tripletTable[k].c);
    const int bits = (a < b ? 1 : 0) | (c < b ? 2 : 0);
    bytes[k / 4] = static_cast<std::uint8_t>((k % 4 == 0 ? 0 : bytes[k / 4]) | bits << 2 * (k % 4));
  }
}

// Address of the pixel that a position truncates to; far outside every image for positions that fit no integer.
std::int64_t addressOf(const Feature& feature, int cols) {
  constexpr float bound = 2147483648.0f;
  const auto fits = [](float v) { return v >= -bound && v < bound; };
  if (!fits(feature.x) || !fits(feature.y)) return (std::numeric_limits<std::int64_t>::min)() / 2;
  return static_cast<std::int64_t>(feature.y) * cols + static_cast<std::int64_t>(feature.x);
}

}  // namespace

void describeFixedPoint(const cv::Mat& image, const cv::Mat& features, cv::Mat& descriptors) {
  if (features.empty()) return descriptors.create(0, fixedPointDescriptorBytes, CV_8UC1);
  const SmoothedImage smoothed(image);
  const cv::Mat kept = features;  // `descriptors` may be the same matrix
  descriptors.create(kept.rows, fixedPointDescriptorBytes, CV_8UC1);

  const bool offsetsFit = smoothed.cols() <= SampleOffsets::largestCols;
  const SampleOffsets offsets(offsetsFit ? smoothed.cols() : 0);
  const Describe describe = cpuVariant() >= CpuVariant::avx2 ? describeAvx2 : describeBaseline;
  const auto describeRows = [&](const tbb::blocked_range<int>& rows) {
    for (int i = rows.begin(); i != rows.end(); ++i) {
      const std::int64_t centre = addressOf(*kept.ptr<Feature>(i), smoothed.cols());
      if (offsetsFit && smoothed.contains(centre))
        describe(smoothed.data() + centre, offsets, descriptors.ptr(i));
      else
        describeChecked(smoothed, centre, descriptors.ptr(i));
    }
  };
  constexpr int featuresPerTask = 64;
  // Isolated: a caller that is itself a task must not be handed other tasks while it waits here.
  tbb::this_task_arena::isolate(
      [&] { tbb::parallel_for(tbb::blocked_range<int>(0, kept.rows, featuresPerTask), describeRows); });
}

}  // namespace MirelAlgorithms
