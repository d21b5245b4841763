#include <MirelAlgorithms/features/FixedPointCorners.h>
#include <features/CornerScenes.h>
#include <features/FeatureTest.h>
#include <gtest/gtest.h>
#include <support/LogCapture.h>

namespace MirelAlgorithms {
namespace {

TEST(FixedPointStages, areLoggedOnTheirPathOnly) {
  const std::wstring lines[] = {L"LUMA  in/lshift/out (bit): 8/4/12", L"SOBEL in/rshift/out (bit): 12/0/15",
                                L"GRADM in/rshift/out (bit): 15/12/17", L"COVAR in/rshift/out (bit): 17/8/14",
                                L"EIGEN in/out (bit): 12/12"};
  for (const bool fixedPoint : {false, true}) {
    const LogCapture log(1000);
    cv::Mat features;
    retrieveFeaturesFPGA(cornerScene(30, 33, 4), features, with(L"FBMFpgaQuantized", fixedPoint), nullptr);
    const auto records = log.of("cornerMinEigenValFpga");
    ASSERT_EQ(records.size(), fixedPoint ? std::size(lines) : 0);
    for (std::size_t i = 0; i < records.size(); ++i) {
      EXPECT_EQ(records[i].message, lines[i]);
      EXPECT_EQ(records[i].level, 1000);
      EXPECT_STREQ(records[i].file, "FeatureExtraction.cpp");
    }
  }
}

}  // namespace
}  // namespace MirelAlgorithms
