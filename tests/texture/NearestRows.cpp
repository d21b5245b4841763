#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/texture/internal/NearestRows.h>
#include <gtest/gtest.h>
#include <matching/MatchingInputs.h>
#include <support/Matrices.h>

#include <opencv2/features2d.hpp>
#include <stdexcept>

namespace {

class NearestRowsTest : public testing::TestWithParam<CpuVariant> {
 protected:
  NearestRowsTest() { limitCpuVariant(GetParam()); }
  ~NearestRowsTest() override { limitCpuVariant(CpuVariant::avx512); }
};

void expectAsBruteForce(const std::vector<NearestRow>& nearest, const cv::Mat& query, const cv::Mat& train, int norm) {
  std::vector<std::vector<cv::DMatch>> lists;
  cv::BFMatcher(norm).knnMatch(query, train, lists, 2);
  ASSERT_EQ(nearest.size(), lists.size());
  for (std::size_t i = 0; i < lists.size(); ++i) {
    EXPECT_EQ(nearest[i].row, lists[i][0].trainIdx);
    EXPECT_EQ(nearest[i].distance, lists[i][0].distance);
    EXPECT_EQ(nearest[i].nextDistance, lists[i].size() == 2 ? lists[i][1].distance : -1);
  }
}

TEST_P(NearestRowsTest, equalsTheBruteForceMatcher) {
  Random random(7);
  for (const int width : {1, 7, 8, 31, 32, 33, 64, 2047})
    for (const auto& [rows1, rows2] : {std::pair{1, 1}, {1, 9}, {70, 1}, {40, 37}, {33, 512}, {20, 1100}}) {
      SCOPED_TRACE(testing::Message() << width << " bytes, " << rows1 << " and " << rows2 << " rows");
      cv::Mat descriptors1 = randomDescriptors(random, static_cast<std::size_t>(rows1), width);
      cv::Mat descriptors2 = randomDescriptors(random, static_cast<std::size_t>(rows2), width);
      if (random() % 2) {  // few bits: many ties
        descriptors1 &= 1;
        descriptors2 &= 1;
      }
      for (const bool pairs : {false, true}) {
        const int norm = pairs ? cv::NORM_HAMMING2 : cv::NORM_HAMMING;
        const NearestRows nearest = findNearestRows("test", descriptors1, descriptors2, pairs);
        expectAsBruteForce(nearest.of1, descriptors1, descriptors2, norm);
        expectAsBruteForce(nearest.of2, descriptors2, descriptors1, norm);
      }
    }
}

INSTANTIATE_TEST_SUITE_P(everyInstructionSet, NearestRowsTest,
                         testing::Values(CpuVariant::baseline, CpuVariant::avx2, CpuVariant::avx512),
                         [](const auto& variant) { return name(variant.param); });

TEST(NearestRowsRefusals, descriptorsThatCannotBeCompared) {
  const cv::Mat good = cv::Mat::zeros(2, 32, CV_8UC1);
  for (const cv::Mat bad : {cv::Mat::zeros(2, 31, CV_8UC1), cv::Mat::zeros(2, 8, CV_32FC1),
                            cv::Mat::zeros(2, 32, CV_8UC2), cv::Mat::zeros(1 << 18, 32, CV_8UC1)}) {
    EXPECT_THROW(findNearestRows("test", good, bad, false), std::invalid_argument);
    EXPECT_THROW(findNearestRows("test", bad, good, false), std::invalid_argument);
  }
  const cv::Mat wide = cv::Mat::zeros(2, 2048, CV_8UC1);
  EXPECT_THROW(findNearestRows("test", wide, wide, false), std::invalid_argument);
}

}  // namespace
