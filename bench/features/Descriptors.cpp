// The fixed-point descriptor against OpenCV's ORB descriptor for the same key points, and against what cannot be
// spared: the smoothing of the whole image, and reading and comparing the samples. Enhancement is off.
#include "../OneThread.h"
#include "Images.h"
#include "KeyPoints.h"

#include <MirelAlgorithms/features/Descriptors.h>
#include <MirelAlgorithms/features/internal/FeatureMatrix.h>
#include <MirelAlgorithms/features/internal/FixedPointDescriptor.h>
#include <MirelAlgorithms/features/internal/TripletTable.h>
#include <benchmark/benchmark.h>
#include <opencv2/features2d.hpp>
#include <vector>

namespace {

using namespace MirelAlgorithms;

void descriptor_fixed(benchmark::State& state, const bench::ImageFormat& format, int count) {
  const bench::OneThread oneThread;
  const cv::Mat image = bench::greyImage(format);
  cv::Mat features = toFeatureMatrix(bench::orbKeyPoints(image, count)), descriptors;
  const SmartPtr<AttrContainer> settings(new AttrContainer());
  settings->set(L"FBMEnhancement", 0);
  for (auto _ : state) retrieveDescriptors(image, features, descriptors, settings);
  state.counters["described"] = descriptors.rows;
}

void ORB_compute(benchmark::State& state, const bench::ImageFormat& format, int count) {
  const bench::OneThread oneThread;
  const cv::Mat image = bench::greyImage(format);
  const auto orb = cv::ORB::create(count);
  const std::vector<cv::KeyPoint> given = bench::orbKeyPoints(image, count);
  std::vector<cv::KeyPoint> keyPoints;
  cv::Mat descriptors;
  for (auto _ : state) {
    keyPoints = given;
    orb->compute(image, keyPoints, descriptors);
  }
  state.counters["described"] = descriptors.rows;
}

// All samples of a feature in plain loops, for features whose patch lies inside the image.
void samplePatch(const float* centre, const int (*offsets)[3], unsigned char* bytes) {
  for (int i = 0; i < fixedPointDescriptorBytes; ++i) {
    int bits = 0;
    for (int k = 0; k < 4; ++k, ++offsets) {
      const float a = centre[(*offsets)[0]], b = centre[(*offsets)[1]], c = centre[(*offsets)[2]];
      bits |= (a < b) << 2 * k | (c < b) << (2 * k + 1);
    }
    bytes[i] = static_cast<unsigned char>(bits);
  }
}

void sepFilter2D_sampling_limit(benchmark::State& state, const bench::ImageFormat& format, int count) {
  const bench::OneThread oneThread;
  cv::Mat image, smoothed, descriptors(count, fixedPointDescriptorBytes, CV_8UC1);
  bench::greyImage(format).convertTo(image, CV_32F);
  const std::vector<cv::KeyPoint> keyPoints = bench::orbKeyPoints(bench::greyImage(format), count);
  const cv::Mat kernel = cv::getGaussianKernel(5, 1.0, CV_64F);
  int offsets[tripletTable.size()][3];
  for (std::size_t k = 0; k < tripletTable.size(); ++k) {
    const auto& [a, b, c] = tripletTable[k];
    const auto offset = [&](PatchPoint p) { return -(p.dy * image.cols + p.dx); };
    offsets[k][0] = offset(a), offsets[k][1] = offset(b), offsets[k][2] = offset(c);
  }
  for (auto _ : state) {
    cv::sepFilter2D(image, smoothed, CV_32F, kernel, kernel, cv::Point(-1, -1), 0.0, cv::BORDER_REFLECT_101);
    for (std::size_t i = 0; i < keyPoints.size(); ++i) {
      const cv::Point at(static_cast<int>(keyPoints[i].pt.x), static_cast<int>(keyPoints[i].pt.y));
      samplePatch(smoothed.ptr<float>(at.y) + at.x, offsets, descriptors.ptr(static_cast<int>(i)));
    }
    benchmark::DoNotOptimize(descriptors.data);
  }
  state.counters["described"] = static_cast<double>(keyPoints.size());
}

#define AT_BOTH_SIZES(function)                                                         \
  BENCHMARK_CAPTURE(function, vga_900, bench::vga, 900)->Unit(benchmark::kMillisecond); \
  BENCHMARK_CAPTURE(function, 1080p_2000, bench::hd1080, 2000)->Unit(benchmark::kMillisecond)

AT_BOTH_SIZES(descriptor_fixed);
AT_BOTH_SIZES(ORB_compute);
BENCHMARK_CAPTURE(ORB_compute, vga_500, bench::vga, 500)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ORB_compute, vga_2000, bench::vga, 2000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ORB_compute, 1080p_500, bench::hd1080, 500)->Unit(benchmark::kMillisecond);
AT_BOTH_SIZES(sepFilter2D_sampling_limit);

}  // namespace
