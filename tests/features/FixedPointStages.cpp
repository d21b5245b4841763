#include <MirelAlgorithms/features/internal/FixedPointStages.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "support/LogCapture.h"
#include "support/ThrownText.h"

namespace MirelAlgorithms {
namespace {

ResponseSettings defaultResponse() { return readSettings<ResponseSettings>(nullptr); }
StageSettings defaultWidths() { return readSettings<StageSettings>(nullptr); }

TEST(FixedPointStages, shiftsOfTheDefaultWidths) {
  const FixedPointStages stages = fixedPointStages(defaultResponse(), defaultWidths());
  EXPECT_EQ(stages.lumaWidth, 12);
  EXPECT_EQ(stages.sobelShift, 0);
  EXPECT_EQ(stages.productShift, 12);
  EXPECT_EQ(stages.blockShift, 8);
}

TEST(FixedPointStages, shiftsOfOtherWidths) {
  ResponseSettings response = defaultResponse();
  StageSettings widths = defaultWidths();
  response.sobelSize = 5;  // 4095 * 48 against 2^14
  EXPECT_EQ(fixedPointStages(response, widths).sobelShift, 4);
  widths.sobelWidth = 18;
  EXPECT_EQ(fixedPointStages(response, widths).sobelShift, 1);
  EXPECT_EQ(fixedPointStages(response, widths).productShift, 18);
  response.blockSize = 4;  // 16 * 2^16 is 2^7 times 2^13
  EXPECT_EQ(fixedPointStages(response, widths).blockShift, 7);
  widths.lumaShift = 12;  // the luma's width goes on growing
  EXPECT_EQ(fixedPointStages(response, widths).sobelShift, 9);
  widths.lumaShift = -7;
  widths.sobelWidth = 1;  // 1 * 48 against 1
  EXPECT_EQ(fixedPointStages(response, widths).lumaWidth, 1);
  EXPECT_EQ(fixedPointStages(response, widths).sobelShift, 6);
}

TEST(FixedPointStages, logsEveryStage) {
  const LogCapture log(1000);
  logStages(fixedPointStages(defaultResponse(), defaultWidths()));
  const std::wstring lines[] = {L"LUMA  in/lshift/out (bit): 8/4/12", L"SOBEL in/rshift/out (bit): 12/0/15",
                                L"GRADM in/rshift/out (bit): 15/12/17", L"COVAR in/rshift/out (bit): 17/8/14",
                                L"EIGEN in/out (bit): 12/12"};
  ASSERT_EQ(log.records.size(), std::size(lines));
  for (std::size_t i = 0; i < std::size(lines); ++i) {
    EXPECT_EQ(log.records[i].message, lines[i]);
    EXPECT_EQ(log.records[i].level, 1000);
    EXPECT_STREQ(log.records[i].function, "cornerMinEigenValFpga");
    EXPECT_STREQ(log.records[i].file, "FeatureExtraction.cpp");
  }
}

TEST(FixedPointStages, refusals) {
  for (const int aperture : {-1, 1, 4, 7}) {
    ResponseSettings response = defaultResponse();
    response.sobelSize = aperture;
    EXPECT_EQ(thrownText<std::runtime_error>([&] { fixedPointStages(response, defaultWidths()); }),
              "Unsupported Sobel size " + std::to_string(aperture) + ". Supported: 3, 5");
  }
  const struct {
    int StageSettings::*width;
    int value;
    const char* text;
  } cases[] = {
      {&StageSettings::lumaShift, -8, "retrieveFeaturesFPGA: FBMLumaLeftShift: -8 given, -7 to 504 expected"},
      {&StageSettings::sobelWidth, 0, "retrieveFeaturesFPGA: FBMSobelWidthOut: 0 given, 1 to 512 expected"},
      {&StageSettings::productWidth, 2000, "retrieveFeaturesFPGA: FBMGradMultWidthOut: 2000 given, 1 to 512 expected"},
      {&StageSettings::blockWidth, -3, "retrieveFeaturesFPGA: FBMCovarWidthOut: -3 given, 1 to 512 expected"},
      {&StageSettings::eigenWidthIn, 32, "syncRescaleFpga: numBits must not exceed 31, found 32"},
      {&StageSettings::eigenWidthOut, 33, "In calcMinEigenValue(..): outWidth must not exceed 32, found 33"},
  };
  for (const auto& c : cases) {
    StageSettings widths = defaultWidths();
    widths.*c.width = c.value;
    EXPECT_EQ(thrownText<std::invalid_argument>([&] { fixedPointStages(defaultResponse(), widths); }), c.text);
  }
}

}  // namespace
}  // namespace MirelAlgorithms
