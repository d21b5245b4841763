// Corners against the response filter alone, which is a part of the floating-point path, against OpenCV's detector, and
// against the fixed-point stages as whole images of doubles. Enhancement is off.
#include "../OneThread.h"
#include "Images.h"

#include <MirelAlgorithms/features/FixedPointCorners.h>
#include <MirelAlgorithms/features/internal/FixedPointResponse.h>
#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace {

using namespace MirelAlgorithms;

void detect(benchmark::State& state, const bench::ImageFormat& format, bool fixedPoint) {
  const bench::OneThread oneThread;
  const cv::Mat image = bench::greyImage(format);
  const SmartPtr<AttrContainer> settings(new AttrContainer());
  settings->set(L"FBMEnhancement", 0);
  settings->set(L"FBMFpgaQuantized", fixedPoint);
  cv::Mat features;
  for (auto _ : state) retrieveFeaturesFPGA(image, features, settings, nullptr);
  state.counters["features"] = features.rows;
}

void corners_float(benchmark::State& state, const bench::ImageFormat& format) { detect(state, format, false); }
void corners_fixed(benchmark::State& state, const bench::ImageFormat& format) { detect(state, format, true); }

FixedPointStages defaultStages() {
  return fixedPointStages(readSettings<ResponseSettings>(nullptr), readSettings<StageSettings>(nullptr));
}

void response_fixed(benchmark::State& state, const bench::ImageFormat& format) {
  const bench::OneThread oneThread;
  const cv::Mat image = bench::greyImage(format);
  const FixedPointStages stages = defaultStages();
  cv::Mat response;
  for (auto _ : state) benchmark::DoNotOptimize(fusedResponse(image, stages, response));
}

void corners_fixed_literal(benchmark::State& state, const bench::ImageFormat& format) {
  const bench::OneThread oneThread;
  const cv::Mat image = bench::greyImage(format);
  const FixedPointStages stages = defaultStages();
  cv::Mat response;
  for (auto _ : state) benchmark::DoNotOptimize(wholeImageResponse(image, stages, response));
}

void cornerMinEigenVal(benchmark::State& state, const bench::ImageFormat& format) {
  const bench::OneThread oneThread;
  const cv::Mat image = bench::greyImage(format);
  cv::Mat response;
  for (auto _ : state) cv::cornerMinEigenVal(image, response, 5, 3, cv::BORDER_REFLECT_101);
}

void goodFeaturesToTrack(benchmark::State& state, const bench::ImageFormat& format) {
  const bench::OneThread oneThread;
  const cv::Mat image = bench::greyImage(format);
  std::vector<cv::Point2f> corners;
  for (auto _ : state) cv::goodFeaturesToTrack(image, corners, 900, 0.01, 7.0);
  state.counters["features"] = static_cast<double>(corners.size());
}

#define AT_ALL_SIZES(function)                                                    \
  BENCHMARK_CAPTURE(function, vga, bench::vga)->Unit(benchmark::kMillisecond);    \
  BENCHMARK_CAPTURE(function, 720p, bench::hd720)->Unit(benchmark::kMillisecond); \
  BENCHMARK_CAPTURE(function, 1080p, bench::hd1080)->Unit(benchmark::kMillisecond)

AT_ALL_SIZES(corners_float);
AT_ALL_SIZES(cornerMinEigenVal);
AT_ALL_SIZES(goodFeaturesToTrack);
AT_ALL_SIZES(corners_fixed);
AT_ALL_SIZES(response_fixed);
AT_ALL_SIZES(corners_fixed_literal);

}  // namespace
