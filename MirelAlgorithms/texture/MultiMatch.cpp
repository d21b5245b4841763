#include <MirelAlgorithms/frame/internal/Settings.h>
#include <MirelAlgorithms/texture/MultiMatch.h>
#include <MirelAlgorithms/texture/TextureFeatures.h>
#include <MirelAlgorithms/texture/TextureMatching.h>
#include <MirelAlgorithms/texture/internal/TextureSettings.h>

#include <algorithm>
#include <opencv2/core.hpp>

namespace MirelAlgorithms {
namespace {

struct Features {
  std::vector<cv::Vec2f> points;
  cv::Mat descriptors;
};

double drift(const cv::Mat& first, const cv::Mat& other) {
  cv::Mat difference;
  cv::subtract(first, other, difference);
  return cv::norm(difference, cv::NORM_HAMMING);
}

// Counts the features that are found in one more image.
void countMatches(const Features& first, const cv::Mat& image, std::vector<MultiMatch>& counted,
                  const SmartPtr<AttrContainer>& attrs) {
  Features other;
  std::vector<cv::Vec3i> matches;
  if (textureExtract(image, other.points, other.descriptors, attrs) != 0) return;
  if (textureMatch(first.points, first.descriptors, other.points, other.descriptors, matches, attrs) != 0) return;
  for (const cv::Vec3i& match : matches) {
    MultiMatch& feature = counted[static_cast<std::size_t>(match[0])];
    ++feature.multiplicity;
    feature.maxDistance = std::max(feature.maxDistance, drift(feature.descriptor, other.descriptors.row(match[1])));
  }
}

}  // namespace

int textureMultiMatch(const std::vector<cv::Mat>& images, std::vector<MultiMatch>& result,
                      SmartPtr<AttrContainer> attrs) {
  if (images.empty()) return 7;
  Features first;
  if (textureExtract(images[0], first.points, first.descriptors, attrs) != 0) return 1;

  std::vector<MultiMatch> counted = result;
  for (std::size_t i = 0; i < first.points.size(); ++i)
    counted.push_back({first.points[i], first.descriptors.row(static_cast<int>(i)), 1, 0.0});
  for (std::size_t j = 1; j < images.size(); ++j) countMatches(first, images[j], counted, attrs);

  const int least = readSettings<MultiMatchSettings>(attrs).leastMultiplicity;
  std::erase_if(counted, [least](const MultiMatch& feature) { return feature.multiplicity < least; });
  result.swap(counted);
  return 0;
}

}  // namespace MirelAlgorithms
