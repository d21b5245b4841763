#include <MirelCore/FunctionTimer.h>
#include <MirelCore/Log.h>
#include <gtest/gtest.h>
#include <support/LogCapture.h>

#include <atomic>
#include <climits>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using MirelCore::log;
using MirelCore::LogRecord;
using MirelCore::setLogSink;

namespace {

TEST(Log, SilentUntilALevelIsSet) {
  for (const int level : {-1, 0, 1, 1000, INT_MAX}) EXPECT_FALSE(MirelCore::shouldLog(level));
  const LogCapture capture(1000);
  for (const int level : {INT_MIN, 1, 1000}) EXPECT_TRUE(MirelCore::shouldLog(level));
  for (const int level : {1001, INT_MAX}) EXPECT_FALSE(MirelCore::shouldLog(level));
}

TEST(Log, RecordHoldsTheCall) {
  const LogCapture capture(1);
  log("File.cpp", 42u, "space::function", 1, L"LUMA  %d/%d, %hs, 0x%x", -8, INT_MAX, "narrow", 0xdeadbeefu);
  ASSERT_EQ(capture.records.size(), 1u);
  const LogRecord record = capture.records[0];
  EXPECT_STREQ(record.file, "File.cpp");
  EXPECT_EQ(record.line, 42u);
  EXPECT_STREQ(record.function, "space::function");
  EXPECT_EQ(record.level, 1);
  EXPECT_EQ(record.message, L"LUMA  -8/2147483647, narrow, 0xdeadbeef");

  for (const std::size_t length : {0u, 254u, 255u, 256u, 1u << 20}) {
    log("", 0, "", 1, L"%ls!", std::wstring(length, L'x').c_str());
    EXPECT_EQ(capture.records.back().message, std::wstring(length, L'x') + L'!');
  }
  log("", 0, "", 1, L"lambda %hs", "\xff\xfe");  // no text in this locale
  EXPECT_EQ(capture.records.back().message, L"lambda %hs");
}

TEST(Log, EmptySinkIsStandardErrorInUtf8) {
  setLogSink({});
  testing::internal::CaptureStderr();
  log("", 0, "function", 7, L"caf\u00e9 %d", 3);
  log("", 0, "next", 8, L"line");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "7 function: caf\xc3\xa9 3\n8 next: line\n");
}

TEST(Log, SinkMayThrow) {
  int calls = 0;
  setLogSink([&](const LogRecord&) {
    if (++calls == 1) throw std::runtime_error("full");
    throw calls;
  });
  for (int i = 0; i < 3; ++i) log("", 0, "", 1, L"line");
  setLogSink({});
  EXPECT_EQ(calls, 3);
}

TEST(Log, SinkMayLogWithoutEnd) {
  int calls = 0, nested = 0;
  setLogSink([&](const LogRecord&) {
    ++calls;
    log("", 0, "", 1, L"about a line");
  });
  log("", 0, "", 1, L"line");
  std::swap(calls, nested);
  log("", 0, "", 1, L"line");
  setLogSink({});
  EXPECT_GT(nested, 1);
  EXPECT_EQ(calls, nested);
}

TEST(Log, SinkMayReplaceItself) {
  std::wstring lines;
  setLogSink([&lines, mine = std::wstring(L"old: ")](const LogRecord& record) {
    setLogSink([&lines](const LogRecord& later) { lines += L"new: " + later.message; });
    lines += mine + record.message + L", ";  // what the function holds is still there
  });
  log("", 0, "", 1, L"a");
  log("", 0, "", 1, L"b");
  setLogSink({});
  EXPECT_EQ(lines, L"old: a, new: b");
}

TEST(Log, LinesOfManyThreadsComeOneByOne) {
  std::atomic<int> inside = 0;
  bool overlap = false;
  std::set<std::wstring> lines;
  setLogSink([&](const LogRecord& record) {
    overlap |= ++inside != 1;
    lines.insert(record.message);
    --inside;
  });
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t)
    threads.emplace_back([t] {
      for (int i = 0; i < 500; ++i) log("", 0, "", 1, L"thread %d line %d", t, i);
    });
  for (std::thread& thread : threads) thread.join();
  setLogSink({});
  EXPECT_FALSE(overlap);
  EXPECT_EQ(lines.size(), 8u * 500u);
}

TEST(FunctionTimer, ReportsOnDestruction) {
  const LogCapture capture(1000);
  {
    const MirelCore::FunctionTimer timer("match %d%%", 50);
    EXPECT_TRUE(capture.records.empty());
  }
  ASSERT_EQ(capture.records.size(), 1u);
  EXPECT_EQ(capture.records[0].level, 1000);
  EXPECT_STREQ(capture.records[0].function, "MirelCore::FunctionTimer");  // the record outlives the timer
  EXPECT_EQ(capture.records[0].message.rfind(L"match 50%: ", 0), 0u);

  MirelCore::setLogLevel(999);
  { const MirelCore::FunctionTimer silent("match"); }
  EXPECT_EQ(capture.records.size(), 1u);
}

}  // namespace
