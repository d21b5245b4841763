#include <gtest/gtest.h>
#include <matching/MatchingInputs.h>
#include <support/LogCapture.h>

namespace {

TEST(QualityLog, OneLineWhenStatisticsAreWantedAndThereAreMatches) {
  Input in = inputWithOnes({0, 500, 1000}, {1000, 0, 500});
  in.keyPoints1[0].pt = {3, 4};   // goes to (0, 0)
  in.keyPoints1[1].pt = {0, 10};  // likewise
  in.keyPoints1[2].pt = {0, 0};
  in.predictions = {{0, 1, FLT_MAX, 1}, {0, 1, FLT_MAX, 2}, {0, 1, FLT_MAX, 3}};
  for (const auto& [level, lines] : {std::pair(1000, 0u), std::pair(1499, 0u), std::pair(1500, 1u)}) {
    LogCapture log(level);
    run(in);
    const auto records = log.of("MirelAlgorithms::matchQualityLog");
    ASSERT_EQ(records.size(), lines);
    if (lines == 0) continue;
    EXPECT_EQ(records[0].level, 1000);
    EXPECT_EQ(records[0].message,
              L"num matches (   3 -    3) :    3 predicted    3  mean dist no prediction:     5.0000   "
              L"mean dist with prediction:     1.0000");
  }
  in.params.maxDistance = 0;
  in.descriptors2 = descriptorsWithOnes({1, 1, 1});
  LogCapture log(1500);
  EXPECT_TRUE(run(in).matches.empty());
  EXPECT_TRUE(log.of("MirelAlgorithms::matchQualityLog").empty());
}

}  // namespace
