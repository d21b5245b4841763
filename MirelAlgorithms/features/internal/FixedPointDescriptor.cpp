#include <MirelAlgorithms/features/internal/FeatureMatrix.h>
#include <MirelAlgorithms/features/internal/FixedPointDescriptor.h>
#include <MirelAlgorithms/features/internal/TripletTable.h>

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>
#include <xmmintrin.h>

#include <algorithm>
#include <cstddef>
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
    // A matrix of its own: the filter must not take the zeros for pixels beyond the border.
    pixels_ = cv::Mat(image.size(), CV_32FC1, storage_.ptr(margin));

    image.convertTo(pixels_, CV_32F);
    const cv::Mat kernel = cv::getGaussianKernel(5, 1.0, CV_64F);
    cv::sepFilter2D(pixels_, pixels_, CV_32F, kernel, kernel, cv::Point(-1, -1), 0.0, cv::BORDER_REFLECT_101);
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
  std::ptrdiff_t outer[2 * tripletTable.size()];
  std::ptrdiff_t inner[tripletTable.size()];

  explicit SampleOffsets(int cols) {
    const auto offset = [cols](const PatchPoint& p) { return -(std::ptrdiff_t{p.dy} * cols + p.dx); };
    for (std::size_t k = 0; k < tripletTable.size(); ++k) {
      outer[2 * k] = offset(tripletTable[k].a);
      outer[2 * k + 1] = offset(tripletTable[k].c);
      inner[k] = offset(tripletTable[k].b);
    }
  }
};

// `centre` is the feature's pixel, inside the image. Gathering the samples with AVX2 was no faster.
void describeInside(const float* centre, const SampleOffsets& offsets, std::uint8_t* bytes) {
  const std::ptrdiff_t* outer = offsets.outer;
  const std::ptrdiff_t* inner = offsets.inner;
  const auto fourBits = [centre](const std::ptrdiff_t* ac, const std::ptrdiff_t* b) {
    const __m128 left = _mm_setr_ps(centre[ac[0]], centre[ac[1]], centre[ac[2]], centre[ac[3]]);
    const __m128 right = _mm_setr_ps(centre[b[0]], centre[b[0]], centre[b[1]], centre[b[1]]);
    return _mm_movemask_ps(_mm_cmplt_ps(left, right));
  };
  for (int i = 0; i < fixedPointDescriptorBytes; ++i, outer += 8, inner += 4)
    bytes[i] = static_cast<std::uint8_t>(fourBits(outer, inner) | fourBits(outer + 4, inner + 2) << 4);
}

// A feature outside the image, whose samples may lie inside or anywhere.
void describeOutside(const SmoothedImage& image, std::int64_t centre, std::uint8_t* bytes) {
  const auto sample = [&](const PatchPoint& p) { return image.at(centre - std::int64_t{p.dy} * image.cols() - p.dx); };
  std::fill_n(bytes, fixedPointDescriptorBytes, std::uint8_t{0});
  for (std::size_t k = 0; k < tripletTable.size(); ++k) {
    const float a = sample(tripletTable[k].a), b = sample(tripletTable[k].b), c = sample(tripletTable[k].c);
    const int bits = (a < b ? 1 : 0) | (c < b ? 2 : 0);
    bytes[k / 4] = static_cast<std::uint8_t>(bytes[k / 4] | bits << 2 * (k % 4));
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

  const SampleOffsets offsets(smoothed.cols());
  const auto describeRows = [&](const tbb::blocked_range<int>& rows) {
    for (int i = rows.begin(); i != rows.end(); ++i) {
      const std::int64_t centre = addressOf(*kept.ptr<Feature>(i), smoothed.cols());
      if (smoothed.contains(centre))
        describeInside(smoothed.data() + centre, offsets, descriptors.ptr(i));
      else
        describeOutside(smoothed, centre, descriptors.ptr(i));
    }
  };
  constexpr int featuresPerTask = 64;
  // Isolated: a caller that is itself a task must not be handed other tasks while it waits here.
  tbb::this_task_arena::isolate(
      [&] { tbb::parallel_for(tbb::blocked_range<int>(0, kept.rows, featuresPerTask), describeRows); });
}

}  // namespace MirelAlgorithms
