// Detection in cells against one run of OpenCV's bare detector on the whole image, and against one run with a mask per
// cell. Enhancement is off.
#include "../OneThread.h"
#include "Images.h"

#include <MirelAlgorithms/features/FeatureExtraction.h>
#include <MirelAlgorithms/features/internal/Detectors.h>
#include <benchmark/benchmark.h>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace MirelAlgorithms;

constexpr std::pair<const char*, int> detectors[] = {{"GFTT", 0}, {"AKAZE", 1}, {"MSER", 2}, {"ORB", 3}, {"BRISK", 5}};
constexpr std::pair<const char*, bench::ImageFormat> formats[] = {
    {"vga", bench::vga}, {"720p", bench::hd720}, {"1080p", bench::hd1080}};

void detectInCells(benchmark::State& state, const bench::ImageFormat& format, int type, int featureType) {
  const bench::OneThread oneThread;
  const cv::Mat image = bench::greyImage(format);
  const SmartPtr<AttrContainer> settings(new AttrContainer());
  settings->set(L"FBMEnhancement", 0);
  settings->set(L"FBMType", type);
  settings->set(L"FBMFeatureType", featureType);
  settings->set(L"FBMnFeatures", 2000);
  cv::Mat features;
  for (auto _ : state) retrieveFeatures(image, features, settings, false);
  state.counters["features"] = features.rows;
}

void detectOnce(benchmark::State& state, const bench::ImageFormat& format, int featureType) {
  const bench::OneThread oneThread;
  const cv::Mat image = bench::greyImage(format);
  std::vector<cv::KeyPoint> keyPoints;
  for (auto _ : state) createDetector(featureType)->detect(image, keyPoints);
  state.counters["features"] = static_cast<double>(keyPoints.size());
}

void detectMasked(benchmark::State& state, const bench::ImageFormat& format, int featureType) {
  const bench::OneThread oneThread;
  const cv::Mat image = bench::greyImage(format);
  const int width = image.cols / 3, height = image.rows / 3;
  const auto detector = createDetector(featureType);
  std::vector<cv::KeyPoint> keyPoints;
  for (auto _ : state)
    for (int cell = 0; cell < 9; ++cell) {
      cv::Mat mask = cv::Mat::zeros(image.size(), CV_8UC1);
      mask(cv::Rect(cell % 3 * width, cell / 3 * height, width, height)).setTo(255);
      detector->detect(image, keyPoints, mask);
    }
}

const bool registered = [] {
  const auto add = [](const std::string& name, auto... arguments) {
    benchmark::RegisterBenchmark(name.c_str(), arguments...)->Unit(benchmark::kMillisecond);
  };
  for (const auto& [size, format] : formats) {
    const std::string at = std::string("/") + size;
    for (const auto& [detector, featureType] : detectors) {
      add(std::string("cells_") + detector + at, detectInCells, format, 2, featureType);
      add(std::string(detector) + "_detect" + at, detectOnce, format, featureType);
      add(std::string(detector) + "_nine_masks" + at, detectMasked, format, featureType);
    }
    add("cells_ORB_subpixel" + at, detectInCells, format, 1, 3);
  }
  return true;
}();

}  // namespace
