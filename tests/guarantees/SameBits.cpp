#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <gtest/gtest.h>
#include <support/LogCapture.h>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>
#include <tbb/task_group.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <opencv2/core.hpp>
#include <set>
#include <thread>

#include "Capabilities.h"

namespace MirelAlgorithms {
namespace {

/// What the process shares with the library, set to something unusual as long as the object lives.
class OtherSurroundings {
 public:
  OtherSurroundings() {
    cv::theRNG() = cv::RNG(987654321);
    std::srand(42);
    std::setlocale(LC_ALL, "de_DE.UTF-8");  // where it is installed
    std::filesystem::current_path(std::filesystem::temp_directory_path());
    locale_ = std::setlocale(LC_ALL, nullptr);
    threadLocale_ = uselocale(nullptr);
  }
  ~OtherSurroundings() {
    std::setlocale(LC_ALL, "C");
    std::filesystem::current_path(folder_);
  }

  // Asked for once: it takes the numbers that come next.
  void expectUntouched() const {
    EXPECT_EQ(cv::theRNG().state, 987654321u);
    const int next = std::rand();
    std::srand(42);
    EXPECT_EQ(next, std::rand());
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), locale_.c_str());
    EXPECT_EQ(uselocale(nullptr), threadLocale_);
    EXPECT_EQ(std::filesystem::current_path(), std::filesystem::canonical(std::filesystem::temp_directory_path()));
  }

 private:
  std::filesystem::path folder_ = std::filesystem::current_path();
  std::string locale_;
  locale_t threadLocale_;
};

class SameBits : public testing::TestWithParam<Capability> {
 protected:
  void TearDown() override {
    limitCpuVariant(CpuVariant::avx512);
    EXPECT_EQ(in.digest(), inputs) << "an input was written to";
  }

  std::uint64_t run() const { return GetParam().run(in); }

  const Inputs& in = Inputs::large();
  const std::uint64_t inputs = in.digest(), expected = GetParam().run(in);
};

TEST_P(SameBits, DependOnTheInput) {
  const bool isAboutInputs = !std::string(GetParam().name).starts_with("frame");
  EXPECT_EQ(GetParam().run(Inputs::small()) != expected, isAboutInputs);
}

TEST_P(SameBits, ForAnyThreadsAndInstructions) {
  constexpr CpuVariant variants[] = {CpuVariant::baseline, CpuVariant::avx2, CpuVariant::avx512};
  constexpr int threadCounts[] = {1, 2, 3, 8};
  for (int repeat = 0; repeat < 20; ++repeat) {
    const int threads = threadCounts[repeat % 4];
    limitCpuVariant(variants[repeat % 3]);
    const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, static_cast<std::size_t>(threads));
    EXPECT_EQ(tbb::task_arena(threads).execute([&] { return run(); }), expected)
        << threads << " threads, " << name(cpuVariant());
  }
}

TEST_P(SameBits, InOtherSurroundings) {
  const OtherSurroundings surroundings;
  EXPECT_EQ(run(), expected);
  surroundings.expectUntouched();
}

TEST_P(SameBits, ForAnyCaller) {
  std::uint64_t ofThread = 0, ofTask = 0;
  std::thread([&] { ofThread = run(); }).join();
  EXPECT_EQ(ofThread, expected);
  EXPECT_EQ(std::async(std::launch::async, [&] { return run(); }).get(), expected);
  tbb::task_group group;
  group.run([&] { ofTask = run(); });
  group.wait();
  EXPECT_EQ(ofTask, expected);
  EXPECT_EQ(tbb::task_arena(1).execute([&] { return run(); }), expected);

  std::vector<std::uint64_t> nested(4);
  tbb::parallel_for(std::size_t{0}, nested.size(), [&](std::size_t i) { nested[i] = run(); });
  EXPECT_EQ(nested, std::vector<std::uint64_t>(nested.size(), expected));
}

// What the log shows too, but for times and threads.
std::vector<std::wstring> logged(const Capability& capability, int threads) {
  static const std::set<std::string> repeatable = {"cornerMinEigenValFpga", "MirelAlgorithms::matchQualityLog",
                                                   "Algorithms::VisibilityCheck::updateGrid"};
  const LogCapture log(2000);
  const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, static_cast<std::size_t>(threads));
  tbb::task_arena(threads).execute([&] { capability.run(Inputs::large()); });
  std::vector<std::wstring> messages;
  for (const auto& record : log.records)
    if (repeatable.count(record.function)) messages.push_back(record.message);
  return messages;
}

TEST_P(SameBits, InTheLog) {
  static const std::set<std::string> talking = {"corners_fixedPoint", "matching_narrow", "geometry_visibility"};
  const auto messages = logged(GetParam(), 1);
  EXPECT_TRUE(!messages.empty() || !talking.count(GetParam().name));
  EXPECT_EQ(messages, logged(GetParam(), 3));
}

INSTANTIATE_TEST_SUITE_P(Of, SameBits, testing::ValuesIn(capabilities()),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace MirelAlgorithms
