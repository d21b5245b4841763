/// Smoothing of small depth images with any mode and window: the median equals its definition, no depth next to holes,
/// the same in place, and what is refused leaves the output alone.
#include <MirelAlgorithms/smoothing/DenseDepth.h>
#include <smoothing/DepthWindow.h>
#include <support/Matrices.h>

#include "Inputs.h"

using MirelAlgorithms::smoothDenseZ16;

void feed(FuzzedDataProvider& data) {
  const fuzz::Settings settings(new Brel::AttrContainer());
  const int mode = data.ConsumeIntegralInRange(0, 3) - 1, odd = 2 * data.ConsumeIntegralInRange(0, 3) + 1;
  const int width = data.ConsumeIntegralInRange(0, 7) != 7
                        ? odd
                        : data.PickValueInArray({-2147483647, -1, 0, 4, 183, 999, 2147483646, 2147483647});
  settings->set(L"smoothDenseMode", mode);
  settings->set(L"smoothDenseRadius", width);
  auto in = fuzz::anyImage(data, mode == 1 ? 12 : 40, CV_16UC1);
  const bool usable = !in.mat.empty() && in.mat.type() == CV_16UC1 && width >= 1 && width % 2 == 1;
  const End tooWide = mode == 1 ? End::refused : End::openCvError;
  cv::Mat out;
  bool result = false;
  const End end = endOf([&] { result = smoothDenseZ16(in.mat, out, settings); });
  MIREL_CHECK(end == (usable && width > (mode == 1 ? 181 : 5) ? tooWide : End::well));
  MIREL_CHECK(in.untouched() && result == (usable && end == End::well) && result == !out.empty());
  if (!result) return;

  MIREL_CHECK(out.size() == in.mat.size() && out.type() == CV_16UC1);
  for (int y = 0; y < out.rows; ++y)
    for (int x = 0; x < out.cols; ++x) {
      const auto pixels = MirelAlgorithms::window(in.mat, x, y, width);
      const ushort median = pixels[pixels.size() / 2], found = out.at<ushort>(y, x);
      MIREL_CHECK(pixels.front() == 0 ? found == 0 : mode == 1 || found == median);
    }
  MIREL_CHECK(smoothDenseZ16(in.mat, in.mat, settings) && MirelAlgorithms::same(in.mat, out));
}
