#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>

using namespace MirelAlgorithms;

namespace {

void setVariable(const std::string& value) {
#if defined(_WIN32)
  _putenv_s("MIREL_CPU", value.c_str());
#else
  setenv("MIREL_CPU", value.c_str(), 1);
#endif
}

TEST(CpuVariant, IsTheNarrowestOfMachineEnvironmentAndLimit) {
  const std::pair<CpuVariant, const char*> variants[] = {
      {CpuVariant::baseline, "baseline"}, {CpuVariant::avx2, "avx2"}, {CpuVariant::avx512, "avx512"}};
  const char* const given = std::getenv("MIREL_CPU");
  const std::string before = given ? given : "";
  setVariable("unheard of");
  limitCpuVariant(CpuVariant::avx512);
  const CpuVariant machine = cpuVariant();
  for (const auto& [wish, text] : variants) {
    EXPECT_STREQ(name(wish), text);
    setVariable(text);
    for (const auto& [limit, other] : variants) {
      limitCpuVariant(limit);
      EXPECT_EQ(cpuVariant(), std::min({machine, wish, limit})) << text << ", " << other;
    }
  }
  setVariable(before);
  limitCpuVariant(CpuVariant::avx512);
}

}  // namespace
