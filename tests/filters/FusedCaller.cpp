// A program that is itself compiled with fused multiply-add gets the bits of the library.
#include <MirelAlgorithms/filters/Butterworth.h>
#include <gtest/gtest.h>

#include "SameBits.h"

using MirelAlgorithms::Butterworth;

namespace {

#if defined(__GNUC__) && defined(__FMA__)
bool canFuse() { return __builtin_cpu_supports("fma"); }
#else
bool canFuse() { return false; }
#endif

TEST(FusedCaller, GetsTheSameBits) {
  if (!canFuse()) GTEST_SKIP() << "no fused multiply-add here";
  const std::vector<float> samples = Stream<float>(43, false).series(3000);
  std::vector<float> values(samples.size());
  Butterworth filter(5.0f, 100, Butterworth::Lowpass, 1.4142f), inLibrary = filter;
  inLibrary.process(samples, values);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    filter.update(samples[i]);
    ASSERT_TRUE(sameBits(filter.value(), values[i])) << "sample " << i;
  }
}

}  // namespace
