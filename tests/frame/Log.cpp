#include <MirelAlgorithms/frame/internal/Log.h>
#include <gtest/gtest.h>
#include <support/LogCapture.h>

namespace {

TEST(LogMacro, ArgumentsAreEvaluatedOnlyForWantedLines) {
  using namespace MirelAlgorithms;
  LogCapture capture(LogLevel::diagnostic);
  int evaluated = 0;
  MIREL_LOG("File.cpp", "function", LogLevel::matchStatistics, L"%d", ++evaluated);
  EXPECT_EQ(evaluated, 0);
  if (evaluated == 0)
    MIREL_LOG("File.cpp", "function", LogLevel::diagnostic, L"bits: %d", ++evaluated);
  else
    FAIL();
  EXPECT_EQ(evaluated, 1);
  ASSERT_EQ(capture.records.size(), 1u);
  EXPECT_STREQ(capture.records[0].file, "File.cpp");
  EXPECT_EQ(capture.records[0].level, 1000);
  EXPECT_EQ(capture.records[0].message, L"bits: 1");
}

}  // namespace
