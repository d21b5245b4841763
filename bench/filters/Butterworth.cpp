// A low-pass on 100,000 samples: sample by sample, as a whole, and eight channels at once, and a band-pass, against the
// same recurrence as a loop of local variables. scipy's sosfilt is measured by scipy_peers.py.
#include <MirelAlgorithms/filters/Butterworth.h>
#include <benchmark/benchmark.h>

#include <numbers>

#include "Recording.h"

namespace {

using MirelAlgorithms::Butterworth;

constexpr float cutoff = 5.0f, resonance = 1.4142f;
constexpr int rate = 100;

void biquad_sample_by_sample(benchmark::State& state) {
  const std::vector<float> samples = bench::recordedSeries<float>(bench::recordingLength);
  std::vector<float> values(samples.size());
  Butterworth filter(cutoff, rate, Butterworth::Lowpass, resonance);
  for (auto _ : state) {
    for (std::size_t i = 0; i < samples.size(); ++i) {
      filter.update(samples[i]);
      values[i] = filter.value();
    }
    benchmark::DoNotOptimize(values.data());
    benchmark::ClobberMemory();
  }
  bench::countSamples(state, samples.size());
}

void biquad_process(benchmark::State& state) {
  const std::vector<float> samples = bench::recordedSeries<float>(bench::recordingLength);
  std::vector<float> values(samples.size());
  Butterworth filter(cutoff, rate, Butterworth::Lowpass, resonance);
  for (auto _ : state) filter.process(samples, values);
  bench::countSamples(state, samples.size());
}

void biquad_process_8_channels(benchmark::State& state) {
  const std::vector<float> samples = bench::recordedSeries<float>(8 * bench::recordingLength);
  std::vector<float> values(samples.size());
  std::vector<Butterworth> filters(8, Butterworth(cutoff, rate, Butterworth::Lowpass, resonance));
  for (auto _ : state) Butterworth::process(filters, samples, values);
  bench::countSamples(state, samples.size());
}

void bandpass_process(benchmark::State& state) {
  const std::vector<float> samples = bench::recordedSeries<float>(bench::recordingLength);
  std::vector<float> values(samples.size());
  MirelAlgorithms::ButterworthBandpass filter;
  for (auto _ : state) filter.process(samples, values);
  bench::countSamples(state, samples.size());
}

void biquad_inlined_loop(benchmark::State& state) {
  const std::vector<float> samples = bench::recordedSeries<float>(bench::recordingLength);
  std::vector<float> values(samples.size());
  const float c = 1.0f / std::tan(cutoff * std::numbers::pi_v<float> / rate);
  const float a1 = 1.0f / (1.0f + resonance * c + c * c), a2 = 2.0f * a1, a3 = a1;
  const float b1 = 2.0f * (1.0f - c * c) * a1, b2 = (1.0f - resonance * c + c * c) * a1;
  for (auto _ : state) {
    float in1 = 0.0f, in2 = 0.0f, out1 = 0.0f, out2 = 0.0f;
    for (std::size_t i = 0; i < samples.size(); ++i) {
      const float out = samples[i] * a1 + in1 * a2 + in2 * a3 - b1 * out1 - b2 * out2;
      in2 = in1;
      in1 = samples[i];
      out2 = out1;
      values[i] = out1 = out;
    }
    benchmark::DoNotOptimize(values.data());
    benchmark::ClobberMemory();
  }
  bench::countSamples(state, samples.size());
}

BENCHMARK(biquad_sample_by_sample)->Unit(benchmark::kMillisecond);
BENCHMARK(biquad_process)->Unit(benchmark::kMillisecond);
BENCHMARK(biquad_process_8_channels)->Unit(benchmark::kMillisecond);
BENCHMARK(bandpass_process)->Unit(benchmark::kMillisecond);
BENCHMARK(biquad_inlined_loop)->Unit(benchmark::kMillisecond);

}  // namespace
