// Descriptors of OpenCV's families through the library, against OpenCV's bare calls for the same key points. Both
// create the family in every call. Enhancement is off.
#include <MirelAlgorithms/features/Descriptors.h>
#include <MirelAlgorithms/features/internal/FeatureMatrix.h>
#include <benchmark/benchmark.h>

#include "../OneThread.h"
#include "Images.h"
#include "KeyPoints.h"

#if __has_include(<opencv2/xfeatures2d.hpp>)
#include <opencv2/xfeatures2d.hpp>
#define WITH_XFEATURES2D 1
#else
#define WITH_XFEATURES2D 0
#endif

namespace {

using namespace MirelAlgorithms;

struct Family {
  int type, family, latchBytes;
  cv::Ptr<cv::Feature2D> (*create)();
};

void through(benchmark::State& state, const bench::ImageFormat& format, int count, const Family& family) {
  const bench::OneThread oneThread;
  const cv::Mat image = bench::greyImage(format);
  const cv::Mat given = toFeatureMatrix(bench::orbKeyPoints(image, count));
  const SmartPtr<AttrContainer> settings(new AttrContainer());
  settings->set(L"FBMEnhancement", 0);
  settings->set(L"FBMType", family.type);
  settings->set(L"FBMDescriptorType", family.family);
  settings->set(L"DescLengthBytes", family.latchBytes);
  cv::Mat features, descriptors;
  for (auto _ : state) {
    features = given;
    retrieveDescriptors(image, features, descriptors, settings);
  }
  state.counters["described"] = descriptors.rows;
}

void bare(benchmark::State& state, const bench::ImageFormat& format, int count, const Family& family) {
  const bench::OneThread oneThread;
  const cv::Mat image = bench::greyImage(format).clone();  // LATCH writes into it
  const std::vector<cv::KeyPoint> given = toKeyPoints(toFeatureMatrix(bench::orbKeyPoints(image, count)));
  std::vector<cv::KeyPoint> keyPoints;
  cv::Mat descriptors;
  for (auto _ : state) {
    keyPoints = given;
    family.create()->compute(image, keyPoints, descriptors);
  }
  state.counters["described"] = descriptors.rows;
}

const Family brisk{2, 3, 16, [] { return cv::Ptr<cv::Feature2D>(cv::BRISK::create(30, 3, 1.0f)); }};
const Family orb{
    2, 4, 16,
    [] { return cv::Ptr<cv::Feature2D>(cv::ORB::create(500, 1.2f, 8, 31, 0, 2, cv::ORB::HARRIS_SCORE, 31, 20)); }};
#if WITH_XFEATURES2D
template <int bytes>
cv::Ptr<cv::Feature2D> createLatch() {
  return cv::xfeatures2d::LATCH::create(bytes, true, 3, 2.0);
}
const Family latch16{1, 0, 16, createLatch<16>}, latch32{2, 0, 16, createLatch<32>};
const Family freak{2, 2, 16,
                   [] { return cv::Ptr<cv::Feature2D>(cv::xfeatures2d::FREAK::create(true, true, 22.0f, 4)); }};
#endif

#define BOTH_AT_BOTH_SIZES(name, family)                                                                     \
  BENCHMARK_CAPTURE(through, name##_vga_900, bench::vga, 900, family)->Unit(benchmark::kMillisecond);        \
  BENCHMARK_CAPTURE(bare, name##_vga_900, bench::vga, 900, family)->Unit(benchmark::kMillisecond);           \
  BENCHMARK_CAPTURE(through, name##_1080p_2000, bench::hd1080, 2000, family)->Unit(benchmark::kMillisecond); \
  BENCHMARK_CAPTURE(bare, name##_1080p_2000, bench::hd1080, 2000, family)->Unit(benchmark::kMillisecond)

BOTH_AT_BOTH_SIZES(brisk, brisk);
BOTH_AT_BOTH_SIZES(orb, orb);
#if WITH_XFEATURES2D
BOTH_AT_BOTH_SIZES(latch16, latch16);
BOTH_AT_BOTH_SIZES(latch32, latch32);
BOTH_AT_BOTH_SIZES(freak, freak);
#endif

}  // namespace
