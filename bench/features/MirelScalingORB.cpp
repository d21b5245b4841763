// Scaling ORB for OpenCV's ORB key points: with their sizes as factors of the 31-pixel pattern, and with their sizes as
// stored, where most of the pattern leaves the image. Its peer, ORB_compute, is in Descriptors.cpp.
#include <MirelAlgorithms/features/MirelScalingORB.h>
#include <benchmark/benchmark.h>

#include "../OneThread.h"
#include "Images.h"
#include "KeyPoints.h"

namespace {

void describe(benchmark::State& state, const bench::ImageFormat& format, int count, float sizeUnit) {
  const bench::OneThread oneThread;
  const cv::Mat image = bench::greyImage(format);
  std::vector<cv::KeyPoint> keyPoints = bench::orbKeyPoints(image, count);
  for (cv::KeyPoint& k : keyPoints) {
    k.angle *= -static_cast<float>(CV_PI / 180.0);
    k.size /= sizeUnit;
  }
  MirelAlgorithms::MirelScalingORB orb(image);
  for (auto _ : state) benchmark::DoNotOptimize(orb.getDescriptors(keyPoints));
  state.counters["described"] = static_cast<double>(keyPoints.size());
}

void scaling_orb(benchmark::State& state, const bench::ImageFormat& format, int count) {
  describe(state, format, count, 31.0f);
}
void scaling_orb_clamped(benchmark::State& state, const bench::ImageFormat& format, int count) {
  describe(state, format, count, 1.0f);
}

#define AT_ALL_COUNTS(function)                                                              \
  BENCHMARK_CAPTURE(function, vga_500, bench::vga, 500)->Unit(benchmark::kMillisecond);      \
  BENCHMARK_CAPTURE(function, vga_900, bench::vga, 900)->Unit(benchmark::kMillisecond);      \
  BENCHMARK_CAPTURE(function, vga_2000, bench::vga, 2000)->Unit(benchmark::kMillisecond);    \
  BENCHMARK_CAPTURE(function, 1080p_500, bench::hd1080, 500)->Unit(benchmark::kMillisecond); \
  BENCHMARK_CAPTURE(function, 1080p_2000, bench::hd1080, 2000)->Unit(benchmark::kMillisecond)

AT_ALL_COUNTS(scaling_orb);
AT_ALL_COUNTS(scaling_orb_clamped);

}  // namespace
