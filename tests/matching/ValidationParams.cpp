#include <MirelAlgorithms/matching/ValidationParams.h>
#include <gtest/gtest.h>
#include <support/LogCapture.h>

#include <cfloat>
#include <cstring>

using namespace MirelAlgorithms;

namespace {

TEST(ValidationParams, Presets) {
  struct Row {
    FBMFilterMode mode;
    std::int32_t minMatches;
    float searchRadiusSq;
    std::uint16_t maxDistance;
    float auxLimit1, auxLimit2;
    bool refine;
  };
  LogCapture log(1);
  for (const Row& row :
       {Row{Narrow, 30, 14400.0f, 133, 5.0f, 0.001f, true}, Row{Wide, 20, 160000.0f, 192, 20.0f, 0.004f, true},
        Row{Exhaustive, 1, FLT_MAX, 65535, FLT_MAX, FLT_MAX, false}}) {
    const FBMValidationParams params(row.mode);
    EXPECT_EQ(params.minMatches, row.minMatches);
    EXPECT_EQ(params.searchRadiusSq, row.searchRadiusSq);
    EXPECT_EQ(params.maxDistance, row.maxDistance);
    EXPECT_EQ(params.auxLimit1, row.auxLimit1);
    EXPECT_EQ(params.auxLimit2, row.auxLimit2);
    EXPECT_EQ(params.auxScale, 1.0f);
    EXPECT_EQ(params.ratio, 0.8f);
    EXPECT_EQ(params.refine, row.refine);
  }
  EXPECT_TRUE(log.records.empty());
}

TEST(ValidationParams, WrongModeIsLogged) {
  LogCapture log(1);
  EXPECT_EQ(FBMValidationParams(static_cast<FBMFilterMode>(7)).ratio, 0.8f);
  ASSERT_EQ(log.records.size(), 1u);
  EXPECT_EQ(log.records[0].level, 1);
  EXPECT_STREQ(log.records[0].function, "MirelAlgorithms::FBMValidationParams::FBMValidationParams");
  EXPECT_NE(std::strstr(log.records[0].file, "FeatureExtraction"), nullptr);
}

}  // namespace
