#include <MirelAlgorithms/features/internal/LatchPatches.h>
#include <MirelAlgorithms/frame/internal/CpuVariant.h>

namespace MirelAlgorithms {
namespace {

LatchCentres firstCentres(const std::vector<int>& points, std::size_t count) {
  LatchCentres centres{std::vector<float>(count), std::vector<float>(count)};
  for (std::size_t k = 0; k < count; ++k) {
    centres.x[k] = static_cast<float>(points[2 * k]);
    centres.y[k] = static_cast<float>(points[2 * k + 1]);
  }
  return centres;
}

}  // namespace

void describeLatch(const cv::Mat& image, const std::vector<cv::KeyPoint>& keyPoints, const std::vector<int>& points,
                   int halfPatch, cv::Mat& descriptors) {
  constexpr std::size_t centresPerByte = 3 * 8;
  const LatchCentres centres = firstCentres(points, centresPerByte * static_cast<std::size_t>(descriptors.cols));
  std::vector<std::int32_t> addresses(centres.x.size());
  const int side = 2 * halfPatch + 1;
  const LatchLoop loop = cpuVariant() >= CpuVariant::avx2 ? latchLoopAvx2(side) : latchLoopBaseline(side);
  const auto step = static_cast<std::ptrdiff_t>(image.step[0]);

  for (int i = 0; i < descriptors.rows; ++i) {
    const cv::KeyPoint& k = keyPoints[static_cast<std::size_t>(i)];
    const double column = k.pt.x + 0.5, row = k.pt.y + 0.5;
    const std::uint8_t* pixel = image.ptr(0) + static_cast<int>(row) * step + static_cast<int>(column);
    loop({pixel, step, LatchModule::rotation(k.angle), centres, side, addresses.data(), descriptors.ptr(i)});
  }
}

}  // namespace MirelAlgorithms
