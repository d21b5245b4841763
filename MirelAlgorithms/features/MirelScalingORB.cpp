#include <MirelAlgorithms/features/MirelScalingORB.h>
#include <MirelAlgorithms/features/internal/RotatedPattern.h>
#include <MirelAlgorithms/frame/internal/Require.h>

#include <cmath>
#include <string>
#include <utility>

namespace MirelAlgorithms {
namespace {

void requireFinite(const char* function, const std::vector<cv::KeyPoint>& keyPoints) {
  for (std::size_t i = 0; i < keyPoints.size(); ++i) {
    const cv::KeyPoint& k = keyPoints[i];
    for (const float value : {k.pt.x, k.pt.y, k.size, k.angle})
      if (!std::isfinite(value))
        refuse(function, "keyPoints", std::to_string(value) + " in key point " + std::to_string(i),
               "finite position, size and angle");
  }
}

}  // namespace

MirelScalingORB::MirelScalingORB(cv::Mat image) : image_(std::move(image)) {
  if (!image_.empty()) requireGrey8("MirelScalingORB", "image", image_);
}

cv::Mat MirelScalingORB::getDescriptors(const std::vector<cv::KeyPoint>& keyPoints) const {
  constexpr const char* function = "MirelScalingORB::getDescriptors";
  if (!keyPoints.empty()) requireGrey8(function, "image", image_);
  requireFinite(function, keyPoints);

  cv::Mat descriptors(static_cast<int>(keyPoints.size()), orbDescriptorBytes, CV_8UC1);
  for (int i = 0; i < descriptors.rows; ++i)
    describeRotated(image_, keyPoints[static_cast<std::size_t>(i)], descriptors.ptr(i));
  return descriptors;
}

void MirelScalingORB::getNormalizedPatchDescriptor(cv::Mat patch, unsigned char* descriptor, int nBytes) {
  constexpr const char* function = "MirelScalingORB::getNormalizedPatchDescriptor";
  constexpr int side = 2 * orbPatchRadius + 1;
  requireGrey8(function, "patch", patch);
  if (patch.rows < side || patch.cols < side)
    refuse(function, "patch", std::to_string(patch.cols) + " x " + std::to_string(patch.rows) + " pixels",
           "at least 31 x 31");
  if (!descriptor) refuse(function, "descriptor", "null", "room for the bytes");
  requireRange(function, "nBytes", nBytes, 0, orbDescriptorBytes);

  if (!patch.isContinuous()) patch = patch.clone();  // so that linear indices are addresses
  const std::ptrdiff_t step = patch.cols;
  const unsigned char* centre = patch.data + patch.total() / 2;
  const OrbPair* p = orbPattern.data();
  for (int j = 0; j < nBytes; ++j) {
    int bits = 0;
    for (int k = 0; k < 8; ++k, ++p) {
      const bool darker = centre[p->y1 * step + p->x1] < centre[p->y2 * step + p->x2];
      bits |= (darker ? 1 : 0) << k;
    }
    descriptor[j] = static_cast<unsigned char>(bits);
  }
}

}  // namespace MirelAlgorithms
