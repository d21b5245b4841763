// Guided and exhaustive matching against OpenCV's brute force matcher both ways with ratio test and mutual check,
// against the literal loops over a full cache of distances, and against index structures that search one way only.
#include <MirelAlgorithms/matching/FeatureMatching.h>
#include <benchmark/benchmark.h>

#include <opencv2/features2d.hpp>

#include "../../tests/matching/LiteralMatching.h"
#include "../OneThread.h"
#include "Frames.h"

#if MIREL_BENCH_FAISS
#include <faiss/IndexBinaryFlat.h>
#include <omp.h>
#endif

namespace {

using namespace MirelAlgorithms;
using Pairs = std::vector<std::vector<cv::DMatch>>;

template <class Match>
void match(benchmark::State& state, int features, int bits, const FBMValidationParams& params, const Match& matcher) {
  const bench::OneThread oneThread;
  const bench::Frames frames = bench::makeFrames(features, bits);
  std::vector<FBMatch> matches;
  std::vector<FBPrediction> predictions;
  for (auto _ : state) {
    predictions.clear();
    matcher(frames.keyPoints1, frames.descriptors1, frames.keyPoints2, frames.descriptors2, params, matches,
            predictions);
  }
  state.counters["matches"] = static_cast<double>(matches.size());
}

FBMValidationParams once(float radius) {
  FBMValidationParams params(Narrow);
  params.searchRadiusSq = radius * radius;
  params.refine = false;
  return params;
}

void match_exhaustive(benchmark::State& state, int features, int bits) {
  match(state, features, bits, FBMValidationParams(Exhaustive), matchFeatures);
}
void match_guided_120px(benchmark::State& state, int features, int bits) {
  match(state, features, bits, once(120), matchFeatures);
}
void match_guided_400px(benchmark::State& state, int features, int bits) {
  match(state, features, bits, once(400), matchFeatures);
}
void match_guided_refined(benchmark::State& state, int features, int bits) {
  match(state, features, bits, FBMValidationParams(Narrow), matchFeatures);
}
void literal_exhaustive(benchmark::State& state, int features, int bits) {
  match(state, features, bits, FBMValidationParams(Exhaustive), literal::matchFeatures);
}
void literal_guided(benchmark::State& state, int features, int bits) {
  match(state, features, bits, once(120), literal::matchFeatures);
}

// Nearest and clearly nearer than the second: the index of the nearest, else -1.
std::vector<int> clearlyNearest(const Pairs& pairs) {
  std::vector<int> nearest(pairs.size(), -1);
  for (std::size_t i = 0; i < pairs.size(); ++i)
    if (!pairs[i].empty() && (pairs[i].size() == 1 || pairs[i][0].distance <= 0.8f * pairs[i][1].distance))
      nearest[i] = pairs[i][0].trainIdx;
  return nearest;
}

std::size_t countMutual(const Pairs& forward, const Pairs& backward) {
  const std::vector<int> there = clearlyNearest(forward), back = clearlyNearest(backward);
  std::size_t count = 0;
  for (std::size_t i = 0; i < there.size(); ++i)
    count += there[i] >= 0 && back[static_cast<std::size_t>(there[i])] == static_cast<int>(i);
  return count;
}

void matchBothWays(benchmark::State& state, const bench::Frames& frames, const cv::Mat& mask) {
  const cv::BFMatcher matcher(cv::NORM_HAMMING);
  const cv::Mat backMask = mask.empty() ? cv::Mat() : cv::Mat(mask.t());
  Pairs forward, backward;
  std::size_t matches = 0;
  for (auto _ : state) {
    matcher.knnMatch(frames.descriptors1, frames.descriptors2, forward, 2, mask);
    matcher.knnMatch(frames.descriptors2, frames.descriptors1, backward, 2, backMask);
    matches = countMutual(forward, backward);
  }
  state.counters["matches"] = static_cast<double>(matches);
}

void BFMatcher_knn_both(benchmark::State& state, int features, int bits) {
  const bench::OneThread oneThread;
  matchBothWays(state, bench::makeFrames(features, bits), {});
}

// Making the mask is not part of the time.
void BFMatcher_mask_both(benchmark::State& state, int features, int bits) {
  const bench::OneThread oneThread;
  const bench::Frames frames = bench::makeFrames(features, bits);
  cv::Mat mask(features, features, CV_8UC1);
  for (int i = 0; i < features; ++i)
    for (int j = 0; j < features; ++j) {
      const cv::Point2f d =
          frames.keyPoints1[static_cast<std::size_t>(i)].pt - frames.keyPoints2[static_cast<std::size_t>(j)].pt;
      mask.at<unsigned char>(i, j) = d.dot(d) <= 120 * 120;
    }
  matchBothWays(state, frames, mask);
}

// One way, approximate. Making the index is part of the time.
void FlannLsh_knn(benchmark::State& state, int features, int bits) {
  const bench::OneThread oneThread;
  const bench::Frames frames = bench::makeFrames(features, bits);
  Pairs pairs;
  for (auto _ : state) {
    cv::FlannBasedMatcher matcher(cv::makePtr<cv::flann::LshIndexParams>(12, 20, 2));
    matcher.knnMatch(frames.descriptors1, frames.descriptors2, pairs, 2);
  }
}

#if MIREL_BENCH_FAISS
// One way.
void faiss_flat_knn(benchmark::State& state, int features, int bits) {
  omp_set_num_threads(1);
  const bench::Frames frames = bench::makeFrames(features, bits);
  std::vector<std::int32_t> distances(static_cast<std::size_t>(features) * 2);
  std::vector<faiss::IndexBinary::idx_t> nearest(distances.size());
  for (auto _ : state) {
    faiss::IndexBinaryFlat index(bits);
    index.add(features, frames.descriptors2.data);
    index.search(features, frames.descriptors1.data, 2, distances.data(), nearest.data());
  }
}
BENCHMARK_CAPTURE(faiss_flat_knn, 2000x256, 2000, 256)->Unit(benchmark::kMillisecond);
#endif

#define FRAMES(function, features, bits) \
  BENCHMARK_CAPTURE(function, features##x##bits, features, bits)->Unit(benchmark::kMillisecond)

FRAMES(match_exhaustive, 500, 256);
FRAMES(match_exhaustive, 2000, 128);
FRAMES(match_exhaustive, 2000, 256);
FRAMES(match_exhaustive, 2000, 512);
FRAMES(match_exhaustive, 8000, 256);
FRAMES(BFMatcher_knn_both, 500, 256);
FRAMES(BFMatcher_knn_both, 2000, 128);
FRAMES(BFMatcher_knn_both, 2000, 256);
FRAMES(BFMatcher_knn_both, 2000, 512);
FRAMES(literal_exhaustive, 2000, 256);
FRAMES(FlannLsh_knn, 8000, 256);

FRAMES(match_guided_120px, 500, 256);
FRAMES(match_guided_120px, 2000, 128);
FRAMES(match_guided_120px, 2000, 256);
FRAMES(match_guided_120px, 2000, 512);
FRAMES(match_guided_120px, 5000, 256);
FRAMES(match_guided_400px, 2000, 256);
FRAMES(match_guided_refined, 2000, 256);
FRAMES(BFMatcher_mask_both, 2000, 256);
FRAMES(BFMatcher_mask_both, 5000, 256);
FRAMES(literal_guided, 2000, 256);
FRAMES(literal_guided, 5000, 256);

}  // namespace
