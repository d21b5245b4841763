#include <MirelAlgorithms/matching/ValidationParams.h>
#include <gtest/gtest.h>
#include <support/LogCapture.h>

#include <cfloat>
#include <cstring>
#include <tuple>

using namespace MirelAlgorithms;

namespace {

TEST(ValidationParams, Presets) {
  LogCapture log(1);
  const auto fields = [](FBMFilterMode mode) {
    const FBMValidationParams p(mode);
    return std::tuple(p.minMatches, p.searchRadiusSq, p.maxDistance, p.auxLimit1, p.auxLimit2, p.auxScale, p.ratio,
                      p.refine);
  };
  EXPECT_EQ(fields(Narrow), std::tuple(30, 14400.0f, 133, 5.0f, 0.001f, 1.0f, 0.8f, true));
  EXPECT_EQ(fields(Wide), std::tuple(20, 160000.0f, 192, 20.0f, 0.004f, 1.0f, 0.8f, true));
  EXPECT_EQ(fields(Exhaustive), std::tuple(1, FLT_MAX, 65535, FLT_MAX, FLT_MAX, 1.0f, 0.8f, false));
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
