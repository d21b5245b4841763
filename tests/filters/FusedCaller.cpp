// A program that is itself compiled with fused multiply-add gets the bits of the library.
#include <MirelAlgorithms/filters/AccelIntegrator.h>
#include <MirelAlgorithms/filters/Butterworth.h>
#include <gtest/gtest.h>

#include "SameBits.h"

using MirelAlgorithms::AccelIntegrator;
using MirelAlgorithms::Butterworth;

namespace {

#if defined(__GNUC__) && defined(__FMA__)
bool canFuse() { return __builtin_cpu_supports("fma"); }
#else
bool canFuse() { return false; }
#endif

TEST(FusedCaller, FiltersWithTheSameBits) {
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

TEST(FusedCaller, IntegratesWithTheSameBits) {
  if (!canFuse()) GTEST_SKIP() << "no fused multiply-add here";
  Stream<float> next(44, false);
  AccelIntegrator integrator;
  float speed = 0.0f, position = 0.0f;
  for (int i = 0; i < 1000; ++i) {
    const float acceleration = next(), dt = 0.01f;
    integrator.update({acceleration, 0.0f, 0.0f}, dt);
    const volatile float gain = dt * acceleration;
    speed += gain;
    const volatile float way = dt * speed;
    position += way;
    ASSERT_EQ(integrator.position()[0], position) << "sample " << i;
  }
}

}  // namespace
