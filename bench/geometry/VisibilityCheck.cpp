// The visibility grid beside OctoMap's ray insertion: a wavy wall in front of a scanner that moves along it.
#include <MirelAlgorithms/geometry/VisibilityCheck.h>
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <string>
#if defined(__GLIBC__)
#include <malloc.h>
#endif
#if MIREL_BENCH_OCTOMAP
#include <octomap/octomap.h>
#endif

#include "OneThread.h"

namespace {

using Vector = Eigen::Vector3d;

struct Scan {
  Algorithms::VisibilityCheck::Points points;
  std::map<int, Eigen::Matrix4d> poses;
  std::vector<Vector> sensors = {Vector(0.0, 0.0, 0.0), Vector(0.1, 0.0, 0.0), Vector(0.0, 0.1, 0.02)};
};

constexpr int poseCount = 60;
constexpr double poseStep = 0.01;

Scan scanOf(int count) {
  Scan scan;
  for (int i = 0; i < poseCount; ++i) {
    Eigen::Matrix4d& pose = scan.poses[i] = Eigen::Matrix4d::Identity();
    pose.data()[3] = poseStep * i;
  }
  std::mt19937 random(10);
  std::uniform_real_distribution<double> x(-3.0, 3.0), y(-2.0, 2.0), noise(-0.01, 0.01);
  for (int i = 0; i < count; ++i) {
    const double at = x(random);
    scan.points.emplace_back(Vector(at, y(random), 3.0 + 0.3 * std::sin(2.0 * at) + noise(random)),
                             static_cast<int>(random() % poseCount));
  }
  return scan;
}

std::string caseName(const char* name, int points, double voxel) {
  return std::string(name) + (points == 100000 ? "/1e5_" : "/1e6_") + (voxel < 0.1 ? "5cm" : "25cm");
}

void updateGrid(benchmark::State& state, int points, double voxel) {
  const bench::OneThread oneThread;
  const Scan scan = scanOf(points);
  Algorithms::VisibilityCheck check(voxel);
  for (auto _ : state) check.updateGrid(scan.points, scan.poses, scan.sensors);
  state.counters["voxels"] = static_cast<double>(check.getGrid().cells().size());
#if defined(__GLIBC__)
  state.counters["heap_MB"] = static_cast<double>(mallinfo2().uordblks + mallinfo2().hblkhd) / 1e6;
#endif
}

#if MIREL_BENCH_OCTOMAP
// From the first sensor point only.
void insertPointCloud(benchmark::State& state, int points, double voxel) {
  const Scan scan = scanOf(points);
  std::vector<octomap::Pointcloud> clouds(poseCount);
  for (const auto& [p, pose] : scan.points)
    clouds[static_cast<std::size_t>(pose)].push_back(static_cast<float>(p.x() + poseStep * pose),
                                                     static_cast<float>(p.y()), static_cast<float>(p.z()));
  for (auto _ : state) {
    octomap::OcTree tree(voxel);
    for (int pose = 0; pose < poseCount; ++pose)
      tree.insertPointCloud(clouds[static_cast<std::size_t>(pose)],
                            octomap::point3d(static_cast<float>(poseStep * pose), 0.0f, 0.0f));
    benchmark::DoNotOptimize(tree.size());
  }
}
#endif

[[maybe_unused]] const bool registered = [] {
  for (const int points : {100000, 1000000})
    for (const double voxel : {0.25, 0.05}) {
      benchmark::RegisterBenchmark(caseName("update_grid", points, voxel).c_str(), updateGrid, points, voxel)
          ->Unit(benchmark::kMillisecond);
#if MIREL_BENCH_OCTOMAP
      benchmark::RegisterBenchmark(caseName("octomap_insert", points, voxel).c_str(), insertPointCloud, points, voxel)
          ->Unit(benchmark::kMillisecond);
#endif
    }
  return true;
}();

}  // namespace
