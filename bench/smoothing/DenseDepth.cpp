// Smoothing of depth images beside the bare OpenCV filters, which know nothing of holes.
#include <MirelAlgorithms/smoothing/DenseDepth.h>
#include <benchmark/benchmark.h>

#include <opencv2/photo.hpp>
#include <string>
#include <vector>

#include "OneThread.h"
#include "smoothing/Inputs.h"

namespace {

using namespace MirelAlgorithms;

struct Case {
  const char* name;
  cv::Size size;
  int mode, window;
};

void smoothed(benchmark::State& state, const Case& c, bool holes) {
  const bench::OneThread oneThread;
  const SmartPtr<AttrContainer> settings(new AttrContainer());
  settings->set(L"smoothDenseMode", c.mode);
  settings->set(L"smoothDenseRadius", c.window);
  const cv::Mat depth = bench::depthImage(c.size, holes);
  cv::Mat out;
  for (auto _ : state) smoothDenseZ16(depth, out, settings);
}

void bare(benchmark::State& state, const Case& c, bool holes) {
  const bench::OneThread oneThread;
  const cv::Mat depth = bench::depthImage(c.size, holes);
  const std::vector<float> strengths = {3.0f};
  cv::Mat out;
  for (auto _ : state)
    if (c.mode == 1)
      cv::fastNlMeansDenoising(depth, out, strengths, c.window, 3 * c.window, cv::NORM_L1);
    else
      cv::medianBlur(depth, out, c.window);
}

[[maybe_unused]] const bool registered = [] {
  const cv::Size vga(640, 480), hd720(1280, 720);
  for (const Case& c : {Case{"median3/vga", vga, 0, 3},
                        {"median5/vga", vga, 0, 5},
                        {"nlm5/vga", vga, 1, 5},
                        {"median3/720p", hd720, 0, 3},
                        {"median5/720p", hd720, 0, 5}})
    for (const bool holes : {true, false}) {
      const std::string name = std::string(c.name) + (holes ? "_holes" : "_full");
      benchmark::RegisterBenchmark(("depth_" + name).c_str(), smoothed, c, holes)->Unit(benchmark::kMillisecond);
      benchmark::RegisterBenchmark(("depth_bare_" + name).c_str(), bare, c, holes)->Unit(benchmark::kMillisecond);
    }
  return true;
}();

}  // namespace
