#include <MirelAlgorithms/filters/Butterworth.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "SameBits.h"

using namespace MirelAlgorithms;

namespace {

using Floats = std::vector<float>;

// The section step by step, every product rounded on its own.
class LiteralSection {
 public:
  LiteralSection(float frequency, int sampleRate, bool lowpass, float r) {
    const float t = static_cast<float>(std::tan(static_cast<double>(frequency) * 3.141592653589793 / sampleRate));
    const float c = lowpass ? 1.0f / t : t;
    const volatile float cc = c * c, rc = r * c;
    a1 = 1.0f / ((1.0f + rc) + cc);
    a2 = lowpass ? a1 + a1 : -2.0f * a1;
    b1 = lowpass ? ((1.0f - cc) + (1.0f - cc)) * a1 : (((cc - 1.0f) + cc) - 1.0f) * a1;
    b2 = ((1.0f - rc) + cc) * a1;
  }

  float operator()(float x) {
    ++count;
    const volatile float p1 = x * a1, p2 = x1 * a2, p3 = a1 * x2, p4 = b1 * y1, p5 = b2 * y2;
    const float y = (((p1 + p2) + p3) - p4) - p5;
    x2 = x1;
    x1 = x;
    y2 = y1;
    y1 = y;
    return count > 500 ? y : 0.0f;
  }

 private:
  float a1, a2, b1, b2, x1 = 0, x2 = 0, y1 = 0, y2 = 0;
  int count = 0;
};

struct Design {
  float frequency;
  int sampleRate;
  float resonance;
};
constexpr Design designs[] = {{0.5f, 100, 1.14f},    {5.0f, 100, 1.4142f}, {49.0f, 100, 1.14f}, {1e-3f, 44100, 0.1f},
                              {7.0f, 31, 3.0f},      {50.0f, 100, 1.0f},   {70.0f, 100, 1.0f},  {-3.0f, 100, 1.14f},
                              {0.0f, 100, 1.14f},    {5.0f, 0, 1.14f},     {5.0f, -100, 1.14f}, {5.0f, 100, -4.0f},
                              {INFINITY, 100, 1.0f}, {5.0f, 100, NAN},     {NAN, 100, 1.0f},    {5.0f, 100, INFINITY}};

TEST(Butterworth, EqualsTheLiteralSteps) {
  for (const Design& design : designs)
    for (const bool lowpass : {false, true})
      for (const bool hostile : {false, true}) {
        const auto [frequency, rate, resonance] = design;
        Butterworth filter(frequency, rate, lowpass ? Butterworth::Lowpass : Butterworth::Highpass, resonance);
        LiteralSection literal(frequency, rate, lowpass, resonance);
        Stream<float> next(41, hostile);
        for (unsigned long long n = 1; n <= 1500; ++n) {
          const float sample = next();
          filter.update(sample);
          ASSERT_TRUE(sameBits(filter.value(), literal(sample))) << frequency << " of " << rate << ", sample " << n;
          ASSERT_EQ(filter.updates(), n);
        }
      }
}

TEST(Butterworth, BandpassFeedsTheLowpassWhatTheHighpassLetsOut) {
  for (const bool hostile : {false, true}) {
    ButterworthBandpass filter(0.3f, 20.0f, 90, 1.2f), usual;
    LiteralSection high(0.3f, 90, false, 1.2f), low(20.0f, 90, true, 1.2f);
    LiteralSection usualHigh(0.5f, 100, false, 1.14f), usualLow(40.0f, 100, true, 1.14f);
    Stream<float> next(42, hostile);
    for (unsigned long long n = 1; n <= 1500; ++n) {
      const float sample = next();
      filter.update(sample);
      usual.update(sample);
      ASSERT_TRUE(sameBits(filter.value(), low(high(sample)))) << "sample " << n;
      ASSERT_TRUE(sameBits(usual.value(), usualLow(usualHigh(sample)))) << "sample " << n;
      ASSERT_EQ(filter.updates(), n);
    }
  }
}

template <class Filter>
class ButterworthProcess : public testing::Test {};
using Filters = testing::Types<Butterworth, ButterworthBandpass>;
TYPED_TEST_SUITE(ButterworthProcess, Filters);

// Each channel has seen another number of samples; the series comes in pieces, in place or not.
TYPED_TEST(ButterworthProcess, GivesTheBitsOfSampleBySample) {
  for (std::size_t channels = 1; channels <= 9; ++channels)
    for (const bool hostile : {false, true}) {
      Stream<float> next(static_cast<unsigned>(channels), hostile);
      std::vector<TypeParam> one(channels), many;
      for (std::size_t c = 0; c < channels; ++c) {
        if constexpr (std::is_same_v<TypeParam, Butterworth>)
          one[c] = Butterworth(1.0f + static_cast<float>(c), 100, Butterworth::PassType(c % 2), 1.2f);
        for (std::size_t n = 0; n < 130 * c; ++n) one[c].update(next());
      }
      many = one;
      std::vector<TypeParam> alone = one;
      for (const std::size_t frames : {0, 1, 400, 37, 350}) {
        Floats samples = next.series(frames * channels), expected(samples.size()), values(samples.size());
        for (std::size_t i = 0; i < samples.size(); ++i) {
          one[i % channels].update(samples[i]);
          expected[i] = one[i % channels].value();
        }
        if (channels == 1) {
          alone[0].process(samples, values);
          EXPECT_TRUE(std::equal(values.begin(), values.end(), expected.begin(), sameBits<float>));
        }
        const bool inPlace = frames == 400;
        TypeParam::process(many, samples, inPlace ? samples : values);
        const Floats& found = inPlace ? samples : values;
        EXPECT_TRUE(std::equal(found.begin(), found.end(), expected.begin(), sameBits<float>))
            << channels << " channels, " << frames << " frames";
        for (std::size_t c = 0; c < channels; ++c) EXPECT_EQ(many[c].updates(), one[c].updates());
      }
    }
}

}  // namespace
