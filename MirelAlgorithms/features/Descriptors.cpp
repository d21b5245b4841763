#include <MirelAlgorithms/features/Descriptors.h>
#include <MirelAlgorithms/features/internal/DescriptorFamilies.h>
#include <MirelAlgorithms/features/internal/DescriptorSettings.h>
#include <MirelAlgorithms/features/internal/Enhancement.h>
#include <MirelAlgorithms/features/internal/FeatureMatrix.h>
#include <MirelAlgorithms/features/internal/FixedPointDescriptor.h>
#include <MirelAlgorithms/frame/internal/Require.h>
#include <MirelAlgorithms/frame/internal/Settings.h>

namespace MirelAlgorithms {
namespace {

constexpr const char* function = "retrieveDescriptors";

void describeKeyPoints(const cv::Mat& image, cv::Mat& features, cv::Mat& descriptors,
                       const DescriptorSettings& settings) {
  std::vector<cv::KeyPoint> keyPoints = toKeyPoints(features);
  cv::Mat described;
  if (settings.type == 2)
    describeByFamily(function, settings.family, image, keyPoints, described);
  else
    computeLatch(function, image, keyPoints, described, settings.latch);
  features = toFeatureMatrix(keyPoints);
  descriptors = described;
}

}  // namespace

bool retrieveDescriptors(const cv::Mat& image, cv::Mat& features, cv::Mat& descriptors,
                         SmartPtr<AttrContainer> settings) {
  const auto s = readSettings<DescriptorSettings>(settings);
  requireGrey8(function, "image", image);
  requireFeatureMatrix(function, "features", features);

  const cv::Mat view = enhanced(image, s.enhancement);
  if (s.type == 0)
    describeFixedPoint(view, features, descriptors);
  else
    describeKeyPoints(view, features, descriptors, s);
  return true;
}

}  // namespace MirelAlgorithms
