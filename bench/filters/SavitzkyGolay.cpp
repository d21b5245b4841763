// Smoothing of a series against the literal steps, OpenCV's filter with the same weights (other bits), and a plain
// copy, which is what memory allows. scipy's savgol_filter is measured by scipy_peers.py.
#include <MirelAlgorithms/filters/SavitzkyGolay.h>
#include <MirelAlgorithms/filters/internal/SavitzkyGolayWeights.h>
#include <benchmark/benchmark.h>

#include <opencv2/imgproc.hpp>

#include "../OneThread.h"
#include "Recording.h"

namespace {

using namespace MirelAlgorithms;
using Series = std::vector<double>;

void smoother(benchmark::State& state, int window, std::size_t size) {
  Series in = bench::recordedSeries<double>(size), out(size);
  for (auto _ : state) benchmark::DoNotOptimize(sgCubicSmoother(in, out, window));
  bench::countSamples(state, size);
}

void smoother_literal(benchmark::State& state, int width, std::size_t size) {
  const Series in = bench::recordedSeries<double>(size);
  const SmoothingWindow& window = *findSmoothingWindow(width);
  const std::size_t half = static_cast<std::size_t>(width) / 2;
  Series padded, out;
  for (auto _ : state) {
    padded.clear();
    out.clear();
    for (std::size_t i = half; i > 0; --i) padded.push_back(in[i]);
    padded.insert(padded.end(), in.begin(), in.end());
    for (std::size_t i = size - 2; i > size - 2 - half; --i) padded.push_back(in[i]);
    for (std::size_t i = 0; i < size; ++i) {
      double sum = 0.0;
      for (std::size_t j = 0; j <= 2 * half; ++j) sum += padded[i + j] * window.weights[j] * (1.0 / window.normaliser);
      out.push_back(sum);
    }
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  bench::countSamples(state, size);
}

void sepFilter2D(benchmark::State& state, int width, std::size_t size) {
  const bench::OneThread oneThread;
  Series in = bench::recordedSeries<double>(size), out(size);
  const SmoothingWindow& window = *findSmoothingWindow(width);
  const cv::Mat weights = cv::Mat(1, width, CV_64F, const_cast<double*>(window.weights.data())) / window.normaliser;
  const cv::Mat one = cv::Mat::ones(1, 1, CV_64F), source(1, static_cast<int>(size), CV_64F, in.data());
  cv::Mat target(1, static_cast<int>(size), CV_64F, out.data());
  for (auto _ : state)
    cv::sepFilter2D(source, target, CV_64F, weights, one, cv::Point(-1, -1), 0.0, cv::BORDER_REFLECT_101);
  bench::countSamples(state, size);
}

void copy_of_series(benchmark::State& state, std::size_t size) {
  const Series in = bench::recordedSeries<double>(size);
  Series out(size);
  for (auto _ : state) {
    std::copy(in.begin(), in.end(), out.begin());
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  bench::countSamples(state, size);
}

#define AT_ALL_SIZES(function)                                                           \
  BENCHMARK_CAPTURE(function, 5_of_1e3, 5, 1'000)->Unit(benchmark::kMillisecond);        \
  BENCHMARK_CAPTURE(function, 5_of_1e5, 5, 100'000)->Unit(benchmark::kMillisecond);      \
  BENCHMARK_CAPTURE(function, 5_of_1e7, 5, 10'000'000)->Unit(benchmark::kMillisecond);   \
  BENCHMARK_CAPTURE(function, 11_of_1e3, 11, 1'000)->Unit(benchmark::kMillisecond);      \
  BENCHMARK_CAPTURE(function, 11_of_1e5, 11, 100'000)->Unit(benchmark::kMillisecond);    \
  BENCHMARK_CAPTURE(function, 11_of_1e7, 11, 10'000'000)->Unit(benchmark::kMillisecond); \
  BENCHMARK_CAPTURE(function, 25_of_1e3, 25, 1'000)->Unit(benchmark::kMillisecond);      \
  BENCHMARK_CAPTURE(function, 25_of_1e5, 25, 100'000)->Unit(benchmark::kMillisecond);    \
  BENCHMARK_CAPTURE(function, 25_of_1e7, 25, 10'000'000)->Unit(benchmark::kMillisecond)

AT_ALL_SIZES(smoother);
AT_ALL_SIZES(smoother_literal);
AT_ALL_SIZES(sepFilter2D);
BENCHMARK_CAPTURE(copy_of_series, 1e3, 1'000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(copy_of_series, 1e5, 100'000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(copy_of_series, 1e7, 10'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
