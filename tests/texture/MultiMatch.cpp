#include <MirelAlgorithms/texture/MultiMatch.h>
#include <gtest/gtest.h>
#include <texture/LiteralTexture.h>
#include <texture/TextureTest.h>

#include <algorithm>
#include <bit>

namespace MirelAlgorithms {
namespace {

double drift(const cv::Mat& first, const cv::Mat& other) {
  int bits = 0;
  for (int i = 0; i < first.cols; ++i)
    bits += std::popcount(static_cast<unsigned>(std::max(first.at<uchar>(i) - other.at<uchar>(i), 0)));
  return bits;
}

std::vector<MultiMatch> literalMultiMatch(const std::vector<cv::Mat>& images, std::vector<MultiMatch> result,
                                          const Settings& settings) {
  const auto first = literal::extract(images[0], settings);
  const Points points = literal::positions(first.keyPoints);
  for (std::size_t i = 0; i < points.size(); ++i)
    result.push_back({points[i], first.descriptors.row(static_cast<int>(i)), 1, 0.0});
  for (std::size_t j = 1; j < images.size(); ++j) {
    if (images[j].empty()) continue;
    const auto other = literal::extract(images[j], settings);
    for (const cv::Vec3i& match :
         literal::match(points, first.descriptors, literal::positions(other.keyPoints), other.descriptors, settings)) {
      MultiMatch& feature = result[static_cast<std::size_t>(match[0])];
      ++feature.multiplicity;
      feature.maxDistance = std::max(feature.maxDistance, drift(feature.descriptor, other.descriptors.row(match[1])));
    }
  }
  const int least = literal::setting(settings, L"txmMinMultipicity", 2);
  std::erase_if(result, [=](const MultiMatch& feature) { return feature.multiplicity < least; });
  return result;
}

// Entries that are there already are taken for the first image's first features.
TEST(TextureMultiMatch, equalsTheLiteralSteps) {
  const cv::Mat image = scene(200, 220, 1), flat(90, 80, CV_8UC1, cv::Scalar(7));
  const std::vector<cv::Mat> views{image, seenAside(image, 4), cv::Mat(), seenAside(image, 9), flat, image};
  const std::vector<MultiMatch> none, three(3, {{5, 6}, cv::Mat(1, 32, CV_8UC1, cv::Scalar(255)), 1, 2.0});
  struct Case {
    const std::vector<cv::Mat>& images;
    const std::vector<MultiMatch>& there;
    int least;
  };
  for (const Case& c :
       {Case{views, none, -1}, {views, none, 2}, {views, none, 4}, {views, three, 2}, {{image}, none, 1}}) {
    const Settings settings = settingsOf({{L"txmMinMultipicity", c.least}});
    std::vector<MultiMatch> result = c.there;
    EXPECT_EQ(textureMultiMatch(c.images, result, settings), 0);
    const auto expected = literalMultiMatch(c.images, c.there, settings);
    ASSERT_EQ(result.size(), expected.size());
    ASSERT_GT(result.size(), 20u);
    for (std::size_t i = 0; i < result.size(); ++i) {
      EXPECT_EQ(result[i].point, expected[i].point);
      EXPECT_TRUE(same(result[i].descriptor, expected[i].descriptor));
      EXPECT_EQ(result[i].multiplicity, expected[i].multiplicity);
      EXPECT_EQ(result[i].maxDistance, expected[i].maxDistance);
    }
    EXPECT_EQ(result[result.size() - 2].descriptor.datastart, result.back().descriptor.datastart) << "one memory";
  }
}

}  // namespace
}  // namespace MirelAlgorithms
