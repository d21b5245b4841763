#include <MirelAlgorithms/texture/TextureFeatures.h>
#include <MirelAlgorithms/texture/internal/TextureOrb.h>

namespace MirelAlgorithms {

int textureExtract(const cv::Mat& image, std::vector<cv::Vec2f>& points, cv::Mat& descriptors,
                   SmartPtr<AttrContainer> attrs) {
  if (image.empty()) return 1;
  const TextureFeatures features = extractTexture("textureExtract", image, attrs);
  points.reserve(points.size() + features.keyPoints.size());
  for (const cv::KeyPoint& keyPoint : features.keyPoints) points.emplace_back(keyPoint.pt.x, keyPoint.pt.y);
  descriptors = features.descriptors;
  return 0;
}

}  // namespace MirelAlgorithms
