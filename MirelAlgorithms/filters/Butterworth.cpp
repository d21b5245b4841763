#include <MirelAlgorithms/filters/Butterworth.h>
#include <MirelAlgorithms/filters/internal/ButterworthLanes.h>
#include <MirelAlgorithms/frame/internal/Require.h>

#include <cmath>
#include <cstring>
#include <string>

namespace MirelAlgorithms {
namespace {

constexpr const char* function = "process";

void requireAsMany(std::span<const float> samples, std::span<float> values) {
  if (values.size() != samples.size())
    refuse(function, "values", std::to_string(values.size()) + " elements", std::to_string(samples.size()));
}

void requireWholeFrames(std::size_t channels, std::span<const float> samples, std::span<float> values) {
  requireAsMany(samples, values);
  if (channels == 0 ? !samples.empty() : samples.size() % channels != 0)
    refuse(function, "samples", std::to_string(samples.size()) + " elements",
           "a multiple of the " + std::to_string(channels) + " channels");
}

// Works on a copy, which the compiler keeps in registers.
template <class Filter>
void processOneByOne(Filter& filter, std::span<const float> samples, std::span<float> values) {
  requireAsMany(samples, values);
  Filter running = filter;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    running.update(samples[i]);
    values[i] = running.value();
  }
  filter = running;
}

// `step` takes and gives one sample per lane. `Lanes` channels, from the one that `samples` and `values` begin with.
template <std::size_t Lanes, class Step>
void processLanes(Step step, std::size_t frames, std::size_t channels, const float* samples, float* values) {
  for (std::size_t i = 0; i < frames; ++i, samples += channels, values += channels) {
    float lanes[ButterworthLanes::width] = {};
    std::memcpy(lanes, samples, Lanes * sizeof(float));
    _mm_storeu_ps(lanes, step(_mm_loadu_ps(lanes)));
    std::memcpy(values, lanes, Lanes * sizeof(float));
  }
}

template <class Step>
void processGroup(std::size_t lanes, Step step, std::size_t frames, std::size_t channels, const float* samples,
                  float* values) {
  switch (lanes) {
    case 1:
      return processLanes<1>(step, frames, channels, samples, values);
    case 2:
      return processLanes<2>(step, frames, channels, samples, values);
    case 3:
      return processLanes<3>(step, frames, channels, samples, values);
    default:
      return processLanes<4>(step, frames, channels, samples, values);
  }
}

}  // namespace

Butterworth::Butterworth(float frequency, int sampleRate, PassType passType, float resonance)
    : frequency_(frequency),
      sampleRate_(sampleRate),
      passType_(passType),
      resonance_(resonance),
      c_(0.0f),
      a1_(0.0f),
      a2_(0.0f),
      a3_(0.0f),
      b1_(0.0f),
      b2_(0.0f) {
  reset();
  if (passType != Highpass && passType != Lowpass) return;

  constexpr double pi = 3.141592653589793;
  const float t = static_cast<float>(std::tan(frequency * pi / sampleRate));
  const float r = resonance, c = passType == Lowpass ? 1.0f / t : t, square = c * c;
  c_ = c;
  a1_ = 1.0f / (1.0f + r * c + square);
  a2_ = passType == Lowpass ? a1_ + a1_ : -2.0f * a1_;
  a3_ = a1_;
  b1_ = passType == Lowpass ? ((1.0f - square) + (1.0f - square)) * a1_ : (((square - 1.0f) + square) - 1.0f) * a1_;
  b2_ = (1.0f - r * c + square) * a1_;
}

Butterworth::Butterworth() : Butterworth(0.5f, 100, Highpass, 1.14f) {}

void Butterworth::reset() {
  updates_ = 0;
  in1_ = in2_ = out0_ = out1_ = out2_ = 0.0f;
}

void Butterworth::process(std::span<const float> samples, std::span<float> values) {
  processOneByOne(*this, samples, values);
}

void Butterworth::process(std::span<Butterworth> filters, std::span<const float> samples, std::span<float> values) {
  const std::size_t channels = filters.size();
  requireWholeFrames(channels, samples, values);
  if (samples.empty()) return;
  for (std::size_t first = 0; first < channels; first += ButterworthLanes::width) {
    const std::size_t lanes = std::min(ButterworthLanes::width, channels - first);
    ButterworthLanes::Sections sections{};
    for (std::size_t lane = 0; lane < lanes; ++lane) sections[lane] = &filters[first + lane];
    ButterworthLanes section(sections);
    processGroup(
        lanes, [&](__m128 sample) { return section.step(sample); }, samples.size() / channels, channels,
        samples.data() + first, values.data() + first);
    section.store();
  }
}

ButterworthBandpass::ButterworthBandpass(float lowCutoff, float highCutoff, int sampleRate, float resonance)
    : lowpass_(highCutoff, sampleRate, Butterworth::Lowpass, resonance),
      highpass_(lowCutoff, sampleRate, Butterworth::Highpass, resonance) {}

ButterworthBandpass::ButterworthBandpass() : ButterworthBandpass(0.5f, 40.0f, 100, 1.14f) {}

void ButterworthBandpass::reset() {
  lowpass_.reset();
  highpass_.reset();
}

void ButterworthBandpass::process(std::span<const float> samples, std::span<float> values) {
  processOneByOne(*this, samples, values);
}

void ButterworthBandpass::process(std::span<ButterworthBandpass> filters, std::span<const float> samples,
                                  std::span<float> values) {
  const std::size_t channels = filters.size();
  requireWholeFrames(channels, samples, values);
  if (samples.empty()) return;
  for (std::size_t first = 0; first < channels; first += ButterworthLanes::width) {
    const std::size_t lanes = std::min(ButterworthLanes::width, channels - first);
    ButterworthLanes::Sections lows{}, highs{};
    for (std::size_t lane = 0; lane < lanes; ++lane) {
      lows[lane] = &filters[first + lane].lowpass_;
      highs[lane] = &filters[first + lane].highpass_;
    }
    ButterworthLanes low(lows), high(highs);
    processGroup(
        lanes, [&](__m128 sample) { return low.step(high.step(sample)); }, samples.size() / channels, channels,
        samples.data() + first, values.data() + first);
    low.store();
    high.store();
  }
}

}  // namespace MirelAlgorithms
