#include <MirelAlgorithms/texture/MultiMatch.h>
#include <MirelAlgorithms/texture/TextureFeatures.h>
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

// Of images that are not empty and have features.
std::vector<MultiMatch> literalMultiMatch(const std::vector<cv::Mat>& images, std::vector<MultiMatch> result,
                                          const Settings& settings) {
  const auto first = literal::extract(images[0], settings);
  const Points points = literal::positions(first.keyPoints);
  for (std::size_t i = 0; i < points.size(); ++i)
    result.push_back({points[i], first.descriptors.row(static_cast<int>(i)), 1, 0.0});
  for (std::size_t j = 1; j < images.size(); ++j) {
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

void expectSame(const std::vector<MultiMatch>& result, const std::vector<MultiMatch>& expected) {
  ASSERT_EQ(result.size(), expected.size());
  for (std::size_t i = 0; i < result.size(); ++i) {
    EXPECT_EQ(result[i].point, expected[i].point);
    EXPECT_TRUE(same(result[i].descriptor, expected[i].descriptor));
    EXPECT_EQ(result[i].multiplicity, expected[i].multiplicity);
    EXPECT_EQ(result[i].maxDistance, expected[i].maxDistance);
    EXPECT_EQ(result[i].descriptor.datastart, result[0].descriptor.datastart) << "shares the first image's memory";
  }
}

class TextureMultiMatch : public testing::Test {
 protected:
  const cv::Mat image = scene(200, 220, 1), flat{90, 80, CV_8UC1, cv::Scalar(7)};
  const std::vector<cv::Mat> views{image, seenAside(image, 4), seenAside(image, 9), image};
};

TEST_F(TextureMultiMatch, countsAndDrifts) {
  const std::vector<cv::Mat> withGaps{views[0], views[1], cv::Mat(), views[2], flat, views[3]};
  for (const int least : {-1, 2, 4}) {
    const Settings settings = settingsOf({{L"txmMinMultipicity", least}});
    const auto expected = literalMultiMatch(views, {}, settings);
    EXPECT_GT(expected.size(), 20u);
    std::vector<MultiMatch> result;
    EXPECT_EQ(textureMultiMatch(withGaps, result, settings), 0);
    expectSame(result, expected);
  }
}

TEST_F(TextureMultiMatch, fewImages) {
  Points points;
  cv::Mat descriptors;
  textureExtract(image, points, descriptors, {});
  std::vector<MultiMatch> result, kept;
  EXPECT_EQ(textureMultiMatch({image}, result, settingsOf({{L"txmMinMultipicity", 1}})), 0);
  EXPECT_EQ(result.size(), points.size());

  EXPECT_EQ(textureMultiMatch({image, image}, kept, {}), 0);
  EXPECT_GT(kept.size(), 50u);
  for (const MultiMatch& feature : kept) EXPECT_TRUE(feature.multiplicity == 2 && feature.maxDistance == 0.0);
}

// They are taken for the first image's first features.
TEST_F(TextureMultiMatch, entriesThatAreThere) {
  const std::vector<MultiMatch> there(3, {{5, 6}, cv::Mat(1, 32, CV_8UC1, cv::Scalar(255)), 1, 2.0});
  std::vector<MultiMatch> result = there;
  EXPECT_EQ(textureMultiMatch(views, result, {}), 0);
  const auto expected = literalMultiMatch(views, there, {});
  ASSERT_EQ(result.size(), expected.size());
  EXPECT_EQ(result[0].point, there[0].point);
  EXPECT_EQ(result[0].maxDistance, expected[0].maxDistance);
}

}  // namespace
}  // namespace MirelAlgorithms
