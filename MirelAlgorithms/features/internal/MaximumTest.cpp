#include <MirelAlgorithms/features/internal/MaximumTest.h>

#include <cassert>
#include <opencv2/core.hpp>
#include <stdexcept>

namespace MirelAlgorithms {
namespace {

constexpr int pipelinePatch = 7;
constexpr double pipelineEpsilon = 1.0 / 4096.0;

constexpr int weights5[] = {
    2, 2, 2, 2, 2,  //
    2, 1, 1, 0, 1,  //
    2, 1, 0, 0, 1,  //
    2, 1, 0, 0, 1,  //
    2, 1, 1, 1, 1,
};
constexpr int weights7[] = {
    3, 3, 3, 3, 3, 3, 3,  //
    3, 2, 2, 2, 2, 2, 2,  //
    3, 2, 1, 1, 0, 1, 2,  //
    3, 2, 1, 0, 0, 1, 2,  //
    3, 2, 1, 0, 0, 1, 2,  //
    3, 2, 1, 1, 1, 1, 2,  //
    3, 2, 2, 2, 2, 2, 2,
};

const int* neighbourWeights(int patchSize) { return patchSize == 5 ? weights5 : weights7; }

cv::Mat makeRingMask(int patchSize) {
  cv::Mat mask(patchSize, patchSize, CV_8UC1);
  mask.forEach<uchar>([patchSize](uchar& value, const int* position) {
    const auto atEdge = [patchSize](int i) { return i == 0 || i == patchSize - 1; };
    value = atEdge(position[0]) || atEdge(position[1]) ? 255 : 0;
  });
  return mask;
}

[[maybe_unused]] bool windowInside(const cv::Mat& map, int x, int y, int patchSize) {
  const int half = patchSize / 2;
  return (patchSize == 5 || patchSize == 7) && x >= half && y >= half && x < map.cols - half && y < map.rows - half;
}

}  // namespace

MaximumTest maximumTest(const String& name) {
  if (name.compare(L"SingleMaximum7x7Patch") == 0) return MaximumTest::single;
  if (name.compare(L"AverageRingMask") == 0) return MaximumTest::ring;
  return MaximumTest::weighted;
}

bool checkLocalMaximumFPGA(const cv::Mat& map, int x, int y, int patchSize) {
  assert(map.type() == CV_32FC1 && windowInside(map, x, y, patchSize));
  const int half = patchSize / 2;
  const float centre = map.ptr<float>(y)[x];
  for (int dy = -half; dy <= half; ++dy) {
    const float* row = map.ptr<float>(y + dy) + x;
    for (int dx = -half; dx <= half; ++dx)
      if ((dx != 0 || dy != 0) && !(centre > row[dx])) return false;
  }
  return true;
}

const cv::Mat& initRingMask(int patchSize) {
  static const cv::Mat mask5 = makeRingMask(5), mask7 = makeRingMask(7);
  return patchSize == 5 ? mask5 : mask7;
}

bool checkRingFPGA(const cv::Mat& map, int x, int y, int patchSize) {
  assert(map.type() == CV_32FC1 && windowInside(map, x, y, patchSize));
  const float centre = map.ptr<float>(y)[x];
  if (!(centre >= 0.0)) return false;
  const cv::Rect window(x - patchSize / 2, y - patchSize / 2, patchSize, patchSize);
  cv::Scalar mean, deviation;
  cv::meanStdDev(map(window), mean, deviation, initRingMask(patchSize));
  return centre > mean[0] + 3.0 * deviation[0];
}

bool checkPatchFPGA(const cv::Mat& map, int x, int y, int patchSize, double epsilon) {
  if (map.type() != CV_32FC1) throw std::invalid_argument("checkPatchFPGA(..): input matrix must be of type CV_32F");
  assert(windowInside(map, x, y, patchSize));
  const int half = patchSize / 2;
  const float centre = map.ptr<float>(y)[x];
  const int* weight = neighbourWeights(patchSize);
  for (int dy = -half; dy <= half; ++dy) {
    const float* row = map.ptr<float>(y + dy) + x;
    for (int dx = -half; dx <= half; ++dx)
      if (*weight++ * epsilon + row[dx] > centre) return false;
  }
  return true;
}

bool isMaximum(const cv::Mat& map, int x, int y, MaximumTest test) {
  if (test == MaximumTest::weighted) return checkPatchFPGA(map, x, y, pipelinePatch, pipelineEpsilon);
  if (!checkLocalMaximumFPGA(map, x, y, pipelinePatch)) return false;
  return test == MaximumTest::single || checkRingFPGA(map, x, y, pipelinePatch);
}

}  // namespace MirelAlgorithms
