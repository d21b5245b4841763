#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>

using namespace MirelAlgorithms;

namespace {

constexpr CpuVariant variants[] = {CpuVariant::baseline, CpuVariant::avx2, CpuVariant::avx512};

void setVariable(const std::string& value) {
#if defined(_WIN32)
  _putenv_s("MIREL_CPU", value.c_str());
#else
  setenv("MIREL_CPU", value.c_str(), 1);
#endif
}

TEST(CpuVariant, LimitsNarrowAndNeverWiden) {
  limitCpuVariant(CpuVariant::avx512);
  const CpuVariant widest = cpuVariant();
  for (const CpuVariant limit : variants) {
    limitCpuVariant(limit);
    EXPECT_EQ(cpuVariant(), std::min(limit, widest));
  }
  EXPECT_EQ(cpuVariant(), widest);
}

TEST(CpuVariant, EnvironmentHasTheLastWord) {
  const char* const given = std::getenv("MIREL_CPU");
  const std::string before = given ? given : "";
  setVariable("unheard of");
  limitCpuVariant(CpuVariant::avx512);
  const CpuVariant widest = cpuVariant();
  for (const CpuVariant wish : variants) {
    setVariable(name(wish));
    limitCpuVariant(CpuVariant::avx512);
    EXPECT_EQ(cpuVariant(), std::min(wish, widest));
    limitCpuVariant(CpuVariant::baseline);
    EXPECT_EQ(cpuVariant(), CpuVariant::baseline);
  }
  setVariable(before);
  limitCpuVariant(CpuVariant::avx512);
}

TEST(CpuVariant, Names) {
  EXPECT_STREQ(name(CpuVariant::baseline), "baseline");
  EXPECT_STREQ(name(CpuVariant::avx2), "avx2");
  EXPECT_STREQ(name(CpuVariant::avx512), "avx512");
}

}  // namespace
