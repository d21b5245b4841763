/// ORB descriptors of key points anywhere, of any size and angle: they equal the formula, pixel after pixel, or are
/// refused.
#include <features/LiteralOrb.h>
#include <support/Matrices.h>

#include "Inputs.h"

namespace {

using namespace MirelAlgorithms;

bool isFinite(const cv::KeyPoint& k) {
  return std::isfinite(k.pt.x) && std::isfinite(k.pt.y) && std::isfinite(k.size) && std::isfinite(k.angle);
}

void checkKeyPoints(const cv::Mat& image, const std::vector<cv::KeyPoint>& keyPoints) {
  const bool finite = std::all_of(keyPoints.begin(), keyPoints.end(), isFinite);
  const bool usable = image.empty() ? keyPoints.empty() : image.type() == CV_8UC1 && finite;
  cv::Mat found;
  MIREL_CHECK(refused([&] { found = MirelScalingORB(image).getDescriptors(keyPoints); }) == !usable);
  if (usable) MIREL_CHECK(same(found, literal::descriptors(image, keyPoints)));
}

void checkPatch(const cv::Mat& patch, int bytes) {
  std::vector<uchar> found(std::clamp(bytes, 1, 32));
  const bool usable = patch.type() == CV_8UC1 && patch.rows >= 31 && patch.cols >= 31 && bytes >= 0 && bytes <= 32;
  const auto describe = [&] { MirelScalingORB::getNormalizedPatchDescriptor(patch, found.data(), bytes); };
  MIREL_CHECK(refused(describe) == !usable);
  if (usable) MIREL_CHECK(std::memcmp(found.data(), literal::patchDescriptor(patch).data, bytes) == 0);
}

}  // namespace

void feed(FuzzedDataProvider& data) {
  const bool isPatch = data.ConsumeBool();
  const int patchBytes = data.ConsumeIntegralInRange(-1, 33);
  const auto image = fuzz::anyImage(data, isPatch ? 48 : 90);
  std::vector<cv::KeyPoint> keyPoints;
  while (!isPatch && data.remaining_bytes() > 0 && keyPoints.size() < 100)
    keyPoints.emplace_back(anyReal<float>(data) * 5 + 20, anyReal<float>(data) * 5 + 20, anyReal<float>(data),
                           anyReal<float>(data));
  isPatch ? checkPatch(image.mat, patchBytes) : checkKeyPoints(image.mat, keyPoints);
  MIREL_CHECK(image.untouched());
}
