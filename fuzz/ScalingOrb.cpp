/// ORB descriptors of key points anywhere, of any size and angle: they equal the formula, pixel after pixel, or are
/// refused.
#include <MirelAlgorithms/features/MirelScalingORB.h>
#include <MirelAlgorithms/features/internal/OrbPattern.h>

#include <cmath>

#include "Inputs.h"

namespace {

using MirelAlgorithms::MirelScalingORB;
using MirelAlgorithms::orbPattern;

bool isFinite(const cv::KeyPoint& k) {
  return std::isfinite(k.pt.x) && std::isfinite(k.pt.y) && std::isfinite(k.size) && std::isfinite(k.angle);
}

int pixel(const cv::Mat& image, const cv::KeyPoint& k, float x, float y) {
  const double angle = -static_cast<double>(k.angle);
  const float size = std::clamp(k.size, -1e30f, 1e30f);
  const float a = static_cast<float>(std::cos(angle)) * size, b = static_cast<float>(std::sin(angle)) * size;
  const double column = std::rint(k.pt.x) + static_cast<double>(std::rint(a * x - b * y));
  const double row = std::rint(k.pt.y) + static_cast<double>(std::rint(a * y + b * x));
  return image.at<uchar>(static_cast<int>(std::clamp(row, 0.0, image.rows - 1.0)),
                         static_cast<int>(std::clamp(column, 0.0, image.cols - 1.0)));
}

template <class Pixel>
void checkBits(const uchar* descriptor, int bits, const Pixel& at) {
  for (int t = 0; t < bits; ++t) {
    const auto& p = orbPattern[static_cast<std::size_t>(t)];
    MIREL_CHECK((descriptor[t / 8] >> t % 8 & 1) == (at(p.x1, p.y1) < at(p.x2, p.y2) ? 1 : 0));
  }
}

void checkKeyPoints(const cv::Mat& image, const std::vector<cv::KeyPoint>& keyPoints) {
  cv::Mat descriptors;
  if (refused([&] { descriptors = MirelScalingORB(image).getDescriptors(keyPoints); })) {
    const bool usable = image.empty() ? keyPoints.empty() : image.type() == CV_8UC1;
    MIREL_CHECK(!usable || !std::all_of(keyPoints.begin(), keyPoints.end(), isFinite));
    return;
  }
  MIREL_CHECK(static_cast<std::size_t>(descriptors.rows) == keyPoints.size() && descriptors.cols == 32);
  for (int i = 0; i < descriptors.rows; ++i)
    checkBits(descriptors.ptr(i), 256, [&](int x, int y) {
      return pixel(image, keyPoints[static_cast<std::size_t>(i)], static_cast<float>(x), static_cast<float>(y));
    });
}

void checkPatch(const cv::Mat& patch, int bytes) {
  std::vector<uchar> descriptor(bytes >= 0 && bytes <= 32 ? bytes : 0);
  uchar none = 0;
  const auto describe = [&] {
    MirelScalingORB::getNormalizedPatchDescriptor(patch, descriptor.empty() ? &none : descriptor.data(), bytes);
  };
  const bool usable = patch.type() == CV_8UC1 && patch.rows >= 31 && patch.cols >= 31 && bytes >= 0 && bytes <= 32;
  MIREL_CHECK(refused(describe) == !usable);
  if (!usable) return;
  checkBits(descriptor.data(), 8 * bytes, [&](int x, int y) {
    const int index = patch.rows * patch.cols / 2 + y * patch.cols + x;
    return patch.at<uchar>(index / patch.cols, index % patch.cols);
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  FuzzedDataProvider data(bytes, size);
  const bool isPatch = data.ConsumeBool();
  const int patchBytes = data.ConsumeIntegralInRange(-1, 33);
  const auto image = fuzz::anyImage(data, isPatch ? 48 : 90);
  std::vector<cv::KeyPoint> keyPoints;
  while (!isPatch && data.remaining_bytes() > 0 && keyPoints.size() < 100)
    keyPoints.emplace_back(anyReal<float>(data) * 5 + 20, anyReal<float>(data) * 5 + 20, anyReal<float>(data),
                           anyReal<float>(data));
  isPatch ? checkPatch(image.mat, patchBytes) : checkKeyPoints(image.mat, keyPoints);
  MIREL_CHECK(image.untouched());
  return 0;
}
