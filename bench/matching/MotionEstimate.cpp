// The image motion against what finds a homography in OpenCV: the old RANSAC and the best of its successors. The true
// points are related by a mild homography, with noise of half a pixel; outliers lie anywhere.
#include "../OneThread.h"

#include <MirelAlgorithms/matching/MotionEstimate.h>
#include <benchmark/benchmark.h>

#include <cmath>
#include <opencv2/calib3d.hpp>
#include <random>
#include <vector>

namespace {

using MirelAlgorithms::MotionEstimate;
using MirelAlgorithms::SVec2d;

struct Pairs {
  std::vector<SVec2d> from, to;
  std::vector<bool> inlier;
};

Pairs randomPairs(int count, int outlierPercent) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> column(0.0, 1920.0), row(0.0, 1080.0), percent(0.0, 100.0);
  std::normal_distribution<double> noise(0.0, 0.5);
  Pairs pairs;
  for (int i = 0; i < count; ++i) {
    const double x = column(random), y = row(random), w = 1.0 + 1e-5 * x - 2e-5 * y;
    const bool inlier = percent(random) >= outlierPercent;
    const SVec2d moved((1.01 * x - 0.05 * y + 12.0) / w + noise(random),
                       (0.05 * x + 0.99 * y - 7.0) / w + noise(random));
    const SVec2d anywhere(column(random), row(random));
    pairs.from.emplace_back(x, y);
    pairs.to.push_back(inlier ? moved : anywhere);
    pairs.inlier.push_back(inlier);
  }
  return pairs;
}

/// Root mean square distance of the mapped true inliers from where they are.
template <class Mapping>
double rms(const Pairs& pairs, const Mapping& mapping) {
  double sum = 0.0;
  int count = 0;
  for (std::size_t i = 0; i < pairs.from.size(); ++i) {
    if (!pairs.inlier[i]) continue;
    const SVec2d mapped = mapping(pairs.from[i]);
    sum += std::pow(mapped.x - pairs.to[i].x, 2) + std::pow(mapped.y - pairs.to[i].y, 2);
    ++count;
  }
  return std::sqrt(sum / count);
}

void motion(benchmark::State& state, int count, int outlierPercent) {
  const bench::OneThread oneThread;
  const Pairs pairs = randomPairs(count, outlierPercent);
  MotionEstimate motion;
  for (auto _ : state) motion = MotionEstimate::estimate(pairs.from, pairs.to, {});
  state.counters["rms_px"] = rms(pairs, [&](const SVec2d& p) { return motion.apply(p); });
}

void findHomography(benchmark::State& state, int method, int count, int outlierPercent) {
  const bench::OneThread oneThread;
  const Pairs pairs = randomPairs(count, outlierPercent);
  std::vector<cv::Point2d> from, to;
  for (const SVec2d& p : pairs.from) from.emplace_back(p.x, p.y);
  for (const SVec2d& p : pairs.to) to.emplace_back(p.x, p.y);
  cv::Mat homography;
  for (auto _ : state) homography = cv::findHomography(from, to, method);
  const cv::Matx33d h = homography;
  state.counters["rms_px"] = rms(pairs, [&](const SVec2d& p) {
    const cv::Vec3d q = h * cv::Vec3d(p.x, p.y, 1.0);
    return SVec2d(q[0] / q[2], q[1] / q[2]);
  });
}

void findHomography_leastSquares(benchmark::State& state, int count, int outlierPercent) {
  findHomography(state, 0, count, outlierPercent);
}
void findHomography_RANSAC(benchmark::State& state, int count, int outlierPercent) {
  findHomography(state, cv::RANSAC, count, outlierPercent);
}
void findHomography_USAC(benchmark::State& state, int count, int outlierPercent) {
  findHomography(state, cv::USAC_MAGSAC, count, outlierPercent);
}

#define AT_ALL_SIZES(function)                                                           \
  BENCHMARK_CAPTURE(function, 100_outliers0, 100, 0)->Unit(benchmark::kMicrosecond);     \
  BENCHMARK_CAPTURE(function, 100_outliers30, 100, 30)->Unit(benchmark::kMicrosecond);   \
  BENCHMARK_CAPTURE(function, 1000_outliers0, 1000, 0)->Unit(benchmark::kMicrosecond);   \
  BENCHMARK_CAPTURE(function, 1000_outliers30, 1000, 30)->Unit(benchmark::kMicrosecond); \
  BENCHMARK_CAPTURE(function, 5000_outliers0, 5000, 0)->Unit(benchmark::kMicrosecond);   \
  BENCHMARK_CAPTURE(function, 5000_outliers30, 5000, 30)->Unit(benchmark::kMicrosecond)

AT_ALL_SIZES(motion);
AT_ALL_SIZES(findHomography_leastSquares);
AT_ALL_SIZES(findHomography_RANSAC);
AT_ALL_SIZES(findHomography_USAC);

}  // namespace
