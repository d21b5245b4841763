// The integrator on 100,000 samples against a plain loop.
#include <MirelAlgorithms/filters/AccelIntegrator.h>
#include <benchmark/benchmark.h>

#include "Recording.h"

namespace {

void integrator(benchmark::State& state) {
  const bench::Motion motion = bench::recordedMotion();
  for (auto _ : state) {
    MirelAlgorithms::AccelIntegrator integrator;
    for (const cv::Vec3f& accel : motion.accel) integrator.update(accel, bench::recordingStep);
    benchmark::DoNotOptimize(integrator.position());
  }
  bench::countSamples(state, motion.accel.size());
}

void integrator_plain_loop(benchmark::State& state) {
  const bench::Motion motion = bench::recordedMotion();
  for (auto _ : state) {
    cv::Vec3f speed, position;
    for (const cv::Vec3f& accel : motion.accel) {
      speed += accel * bench::recordingStep;
      position += speed * bench::recordingStep;
    }
    benchmark::DoNotOptimize(position);
  }
  bench::countSamples(state, motion.accel.size());
}

BENCHMARK(integrator)->Unit(benchmark::kMillisecond);
BENCHMARK(integrator_plain_loop)->Unit(benchmark::kMillisecond);

}  // namespace
