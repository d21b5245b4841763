#include <support/SettingsOf.h>
#include <texture/TextureTest.h>

#include "../Capabilities.h"

namespace MirelAlgorithms {
namespace {

Settings textureSettings() { return settingsOf({{L"txmORBedgeThreshold", 20}, {L"txmORBpatchSize", 15}}); }

std::uint64_t textureFeatures(const Inputs& in) {
  std::vector<cv::Vec2f> points;
  cv::Mat descriptors;
  return Digest()(textureExtract(in.grey, points, descriptors, textureSettings()))(points)(descriptors);
}

std::uint64_t textureMatches(const Inputs& in) {
  std::vector<cv::Vec2f> here, there;
  for (const cv::KeyPoint& k : in.keyPoints) here.emplace_back(k.pt);
  for (const cv::KeyPoint& k : in.movedKeyPoints) there.emplace_back(k.pt);
  std::vector<cv::Vec3i> matches;
  Digest digest;
  digest(textureMatch(here, in.descriptors, there, in.movedDescriptors, matches, {}));
  return digest(textureMatch(in.descriptors, in.movedDescriptors, matches, with(L"txmUniquenessRatio", 0.0)))(matches);
}

std::uint64_t textureOfTwo(const Inputs& in) {
  std::vector<cv::Vec2f> here, there;
  return Digest()(textureExtractAndMatch(in.grey, in.moved, here, there, textureSettings()))(here)(there);
}

std::uint64_t textureOfMany(const Inputs& in) {
  std::vector<MultiMatch> result;
  Digest digest;
  digest(textureMultiMatch({in.grey, in.moved, in.grey}, result, textureSettings()));
  for (const MultiMatch& m : result) digest(m.point)(m.descriptor)(m.multiplicity)(m.maxDistance);
  return digest;
}

}  // namespace

std::vector<Capability> textureCapabilities() {
  return {
      {"texture_features", textureFeatures},
      {"texture_matches", textureMatches},
      {"texture_ofTwo", textureOfTwo},
      {"texture_ofMany", textureOfMany},
  };
}

}  // namespace MirelAlgorithms
