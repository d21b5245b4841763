/// Point lists of any numbers, in every mode: what is kept are rows of the input, in the promised order and number, the
/// same on every call and in place, with OpenCV's generator as it was.
#include <MirelAlgorithms/smoothing/SparsePoints.h>
#include <support/Matrices.h>

#include "Inputs.h"

namespace {

using MirelAlgorithms::same;
using MirelAlgorithms::smoothSparse3D;

bool sameRow(const cv::Mat& a, int i, const cv::Mat& b, int j) {
  return std::memcmp(a.ptr(i), b.ptr(j), a.cols * a.elemSize()) == 0;
}

// Column 5 numbers the rows.
void checkKept(const cv::Mat& in, const cv::Mat& out, int mode, int mostPoints) {
  if (out.empty()) return;
  MIREL_CHECK(out.type() == in.type() && out.cols == in.cols && out.rows <= in.rows);
  int last = -1;
  for (int i = 0; i < out.rows; ++i) {
    const int source = static_cast<int>(out.at<float>(i, 5));
    MIREL_CHECK(sameRow(out, i, in, source) && (mode == 3 || mode == 4 || source > last));
    last = source;
  }
  const int first = mode == 5 ? 1 : 4;
  if (mode == 5 || mode == 6) {
    int step = first;
    while (step < 20 && in.rows / step > (mode == 5 ? 2LL : 1LL) * mostPoints) ++step;
    MIREL_CHECK(out.rows == (in.rows + step - 1) / step && sameRow(out, out.rows - 1, in, (out.rows - 1) * step));
  }
  if (mode < 2 || mode > 6) MIREL_CHECK(out.rows == in.rows);
}

// Places on a plane, near positions, values on few steps; some of them any number.
fuzz::ExactMatrix anyPoints(FuzzedDataProvider& data) {
  const int rows = fuzz::upTo(data, 300, 1), hostile = data.ConsumeIntegralInRange(0, 20);
  fuzz::ExactMatrix points(data, rows, 6, CV_32FC1);
  cv::RNG random(data.ConsumeIntegral<std::uint16_t>());
  const float side = data.ConsumeBool() ? 0.15f : 6.0f, steps = data.ConsumeBool() ? 8.0f : 1e6f;
  for (int i = 0; i < rows; ++i) {
    float* row = points.mat.ptr<float>(i);
    for (int k = 0; k < 2; ++k) row[k] = std::floor(random.uniform(0.0f, steps)) / steps;
    for (int k = 2; k < 4; ++k) row[k] = random.uniform(0.0f, side);
    row[4] = static_cast<float>(random.uniform(0, 8)) / 50;
    row[5] = static_cast<float>(i);
  }
  for (int i = 0; i < hostile; ++i)
    points.mat.at<float>(data.ConsumeIntegralInRange(0, rows - 1), data.ConsumeIntegralInRange(0, 4)) =
        anyReal<float>(data);
  points.keep();
  return points;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  FuzzedDataProvider data(bytes, size);
  const fuzz::Settings settings = fuzz::anySettings(
      data, "smoothSparse3D",
      {{L"smoothSparseMode", 0, 0x7fff}, {L"smoothSparseMaxPts", -1, 400}, {L"smoothSparseMinPts", 0, 120}});
  if (data.ConsumeBool()) settings->set(L"smoothSparseMode", data.ConsumeIntegralInRange(2, 6) << 12);
  const int mode = (fuzz::valueOf(settings, L"smoothSparseMode", 0x4000) & 0xF000) >> 12;
  const int least = fuzz::valueOf(settings, L"smoothSparseMinPts", 100);
  cv::Mat out(2, 2, CV_8UC1), again;
  if (fuzz::rarely(data)) {  // rows of anything
    const int type = data.PickValueInArray({CV_8UC1, CV_16UC1, CV_32FC1, CV_32SC1, CV_64FC1, CV_8UC3});
    const int rows = data.ConsumeIntegralInRange(0, 40), cols = data.ConsumeIntegralInRange(0, 20);
    const fuzz::ExactMatrix in(data, rows, cols, type);
    const bool enough = rows > 0 && cols >= 5 && rows >= least;
    MIREL_CHECK(refused([&] { smoothSparse3D(in.mat, out, settings); }) == (enough && cols * in.mat.elemSize() < 20));
    MIREL_CHECK(in.untouched());
    return 0;
  }
  const fuzz::ExactMatrix in = anyPoints(data);
  const std::uint64_t generator = cv::theRNG().state;
  const bool result = smoothSparse3D(in.mat, out, settings);
  MIREL_CHECK(in.untouched() && cv::theRNG().state == generator &&
              result == (out.rows >= least && !(in.mat.rows < least)));
  if (in.mat.rows < least) MIREL_CHECK(out.empty());
  if (in.mat.rows >= least) checkKept(in.mat, out, mode, fuzz::valueOf(settings, L"smoothSparseMaxPts", 15000));
  again = in.mat;
  MIREL_CHECK(smoothSparse3D(again, again, settings) == result && same(again, out) && in.untouched());
  return 0;
}
