// The attitude filter on 100,000 samples, against x-io's Fusion without a magnetometer (where it was fetched) and a
// plain Mahony filter on Eigen.
#include <MirelAlgorithms/filters/MayhonyAHRS.h>
#include <benchmark/benchmark.h>

#include <Eigen/Geometry>

#include "Recording.h"
#if MIREL_BENCH_FUSION
extern "C" {
#include <FusionAhrs.h>
}
#endif

namespace {

void attitude(benchmark::State& state) {
  const bench::Motion motion = bench::recordedMotion();
  MirelAlgorithms::MayhonyAHRS filter;
  for (auto _ : state) {
    for (std::size_t i = 0; i < motion.gyro.size(); ++i)
      filter.update(motion.gyro[i], motion.accel[i], motion.gyro[i], bench::recordingStep);
    benchmark::DoNotOptimize(filter.value());
  }
  bench::countSamples(state, motion.gyro.size());
}

// Mahony, Hamel, Pflimlin: "Nonlinear complementary filters on the special orthogonal group", 2008.
class PlainMahony {
 public:
  void update(const Eigen::Vector3f& gyro, const Eigen::Vector3f& accel, float dt) {
    Eigen::Vector3f rate = gyro;
    const float length = accel.norm();
    if (length > 0.0f) {
      const Eigen::Vector3f error = (accel / length).cross(attitude_.conjugate() * Eigen::Vector3f::UnitZ());
      integral_ += 0.15f * dt * error;
      rate += 0.6f * error + integral_;
    }
    const Eigen::Quaternionf turn = attitude_ * Eigen::Quaternionf(0.0f, rate.x(), rate.y(), rate.z());
    attitude_.coeffs() += 0.5f * dt * turn.coeffs();
    attitude_.normalize();
  }

  const Eigen::Quaternionf& attitude() const { return attitude_; }

 private:
  Eigen::Quaternionf attitude_ = Eigen::Quaternionf::Identity();
  Eigen::Vector3f integral_ = Eigen::Vector3f::Zero();
};

void plain_mahony_eigen(benchmark::State& state) {
  const bench::Motion motion = bench::recordedMotion();
  PlainMahony filter;
  for (auto _ : state) {
    for (std::size_t i = 0; i < motion.gyro.size(); ++i)
      filter.update(Eigen::Vector3f(motion.gyro[i].val), Eigen::Vector3f(motion.accel[i].val), bench::recordingStep);
    benchmark::DoNotOptimize(filter.attitude());
  }
  bench::countSamples(state, motion.gyro.size());
}

BENCHMARK(attitude)->Unit(benchmark::kMillisecond);
BENCHMARK(plain_mahony_eigen)->Unit(benchmark::kMillisecond);

#if MIREL_BENCH_FUSION
void x_io_fusion(benchmark::State& state) {
  const bench::Motion motion = bench::recordedMotion();
  constexpr float degrees = 57.29578f;
  std::vector<FusionVector> gyro, accel;
  for (const cv::Vec3f& g : motion.gyro) gyro.push_back({{g[0] * degrees, g[1] * degrees, g[2] * degrees}});
  for (const cv::Vec3f& a : motion.accel) accel.push_back({{a[0], a[1], a[2]}});
  FusionAhrs filter;
  FusionAhrsInitialise(&filter);
  FusionAhrsSetSamplePeriod(&filter, bench::recordingStep);
  for (auto _ : state) {
    for (std::size_t i = 0; i < gyro.size(); ++i) FusionAhrsUpdateNoMagnetometer(&filter, gyro[i], accel[i]);
    benchmark::DoNotOptimize(FusionAhrsGetQuaternion(&filter));
  }
  bench::countSamples(state, motion.gyro.size());
}

BENCHMARK(x_io_fusion)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
