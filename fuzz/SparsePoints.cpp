/// Point lists of any numbers, in every mode: what is kept are rows of the input, in the promised order and number, the
/// same on every call and in place, with OpenCV's generator as it was.
#include <MirelAlgorithms/smoothing/SparsePoints.h>
#include <support/Matrices.h>

#include "Inputs.h"

namespace {

using MirelAlgorithms::same;
using MirelAlgorithms::smoothSparse3D;

// Column 5 numbers the rows.
void checkKept(const cv::Mat& in, const cv::Mat& out, int mode) {
  if (out.empty()) return;
  MIREL_CHECK(out.type() == in.type() && out.cols == in.cols && out.rows <= in.rows);
  int last = -1;
  for (int i = 0; i < out.rows; ++i) {
    const int source = static_cast<int>(out.at<float>(i, 5));
    MIREL_CHECK(same(out.row(i), in.row(source)) && (mode == 3 || mode == 4 || source > last));
    last = source;
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

void feed(FuzzedDataProvider& data) {
  const fuzz::Settings settings = fuzz::anySettings(data, "smoothSparse3D");
  const int mode = data.ConsumeIntegralInRange(1, 7);
  settings->set(L"smoothSparseMode", mode << 12);
  const int least = fuzz::valueOf(settings, L"smoothSparseMinPts", 100);
  cv::Mat out, again;
  const fuzz::ExactMatrix in = anyPoints(data);
  const std::uint64_t generator = cv::theRNG().state;
  const bool result = smoothSparse3D(in.mat, out, settings), enough = in.mat.rows >= least;
  MIREL_CHECK(in.untouched() && cv::theRNG().state == generator && result == (enough && out.rows >= least));
  if (enough)
    checkKept(in.mat, out, mode);
  else
    MIREL_CHECK(out.empty());
  again = in.mat;
  MIREL_CHECK(smoothSparse3D(again, again, settings) == result && same(again, out) && in.untouched());
}
