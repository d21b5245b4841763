/// Smoothing of small depth images with any mode and window: the median equals its definition, no depth next to holes,
/// the same in place, and what is refused leaves the output alone.
#include <MirelAlgorithms/smoothing/DenseDepth.h>
#include <smoothing/DepthWindow.h>
#include <support/Matrices.h>

#include "Inputs.h"

namespace {

using MirelAlgorithms::same;
using MirelAlgorithms::smoothDenseZ16;
using MirelAlgorithms::window;

void check(const cv::Mat& in, const cv::Mat& out, bool isMedian, int width) {
  MIREL_CHECK(out.size() == in.size() && out.type() == CV_16UC1);
  for (int y = 0; y < in.rows; ++y)
    for (int x = 0; x < in.cols; ++x) {
      const auto pixels = window(in, x, y, width);
      if (pixels.front() == 0)
        MIREL_CHECK(out.at<ushort>(y, x) == 0);
      else if (isMedian)
        MIREL_CHECK(out.at<ushort>(y, x) == pixels[pixels.size() / 2]);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  FuzzedDataProvider data(bytes, size);
  const fuzz::Settings settings(new Brel::AttrContainer());
  const int mode = data.ConsumeIntegralInRange(0, 3) - 1, odd = 2 * data.ConsumeIntegralInRange(0, 3) + 1;
  const int width = data.ConsumeIntegralInRange(0, 7) != 7
                        ? odd
                        : data.PickValueInArray({-2147483647, -1, 0, 4, 183, 999, 2147483646, 2147483647});
  settings->set(L"smoothDenseMode", mode);
  settings->set(L"smoothDenseRadius", width);
  auto in = fuzz::anyImage(data, mode == 1 ? 12 : 40, CV_16UC1);
  const bool usable = !in.mat.empty() && in.mat.type() == CV_16UC1 && width >= 1 && width % 2 == 1;
  const auto before = fuzz::ExactMatrix(data, 3, data.ConsumeIntegralInRange(1, 8), CV_16UC1);
  cv::Mat out = data.ConsumeBool() ? before.mat : cv::Mat(in.mat.size(), CV_16UC1);
  const uchar* const place = out.data;
  bool result = false;
  try {
    MIREL_CHECK(refused([&] { result = smoothDenseZ16(in.mat, out, settings); }) ==
                (usable && mode == 1 && width > 181));
    MIREL_CHECK(result == (usable && !(mode == 1 && width > 181)));
  } catch (const cv::Exception&) {
    MIREL_CHECK(usable && mode != 1 && width > 5);
  }
  MIREL_CHECK(in.untouched() && (result || before.untouched()));
  if (!result) {
    MIREL_CHECK(out.data == place);
    return 0;
  }
  check(in.mat, out, mode != 1, width);
  MIREL_CHECK(smoothDenseZ16(in.mat, in.mat, settings) && same(in.mat, out));
  return 0;
}
