#include <gtest/gtest.h>
#include <matching/MatchingInputs.h>
#include <support/LogCapture.h>
#include <tbb/task_arena.h>

#include <thread>

namespace {

TEST(TracedLoop, EveryThreadIsTracedOnce) {
  const Input in = inputWithOnes({0, 500}, {0, 500});
  std::thread([&in] {  // a thread of its own has not been traced yet
    tbb::task_arena arena(1);
    for (const std::size_t lines : {1, 0}) {
      LogCapture log(1000);
      arena.execute([&] { run(in); });
      for (const char* function : {"MirelAlgorithms::matchForward", "MirelAlgorithms::matchBackward"}) {
        const auto records = log.of(function);
        ASSERT_EQ(records.size(), lines) << function;
        if (lines == 0) continue;
        EXPECT_EQ(records[0].level, 1000);
        EXPECT_EQ(records[0].message.rfind(L"lambda ", 0), 0u) << "unexpected text";
        EXPECT_NE(records[0].message.find(L" thread 0x"), std::wstring::npos);
      }
    }
  })
      .join();
  LogCapture silent(999);
  run(in);
  EXPECT_TRUE(silent.records.empty());
}

}  // namespace
