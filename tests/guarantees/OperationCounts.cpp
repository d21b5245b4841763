#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <gtest/gtest.h>
#include <tbb/task_arena.h>
#include <x86intrin.h>

#include <csignal>
#include <cstdio>
#include <opencv2/core/utility.hpp>
#include <ostream>

#include "Capabilities.h"

namespace MirelAlgorithms {
namespace {

volatile std::sig_atomic_t steps;
void countStep(int) { steps = steps + 1; }

/// Instructions that this thread executes in a call: with the trap flag set the processor stops after each of them
/// (Intel SDM, volume 3, 17.3). Unlike times they are the same in every run.
template <class Call>
double instructionsOf(const Call& call) {
  constexpr unsigned long long trapFlag = 0x100;
  const auto before = std::signal(SIGTRAP, countStep);
  steps = 0;
  __writeeflags(__readeflags() | trapFlag);
  call();
  __writeeflags(__readeflags() & ~trapFlag);
  std::signal(SIGTRAP, before);
  return steps;
}

struct Growth {
  const char* name;
  int size;       ///< the first of three, each twice the one before
  double factor;  ///< of operations when the size doubles, at most
  std::uint64_t (*run)(int size);
};
std::ostream& operator<<(std::ostream& stream, const Growth& growth) { return stream << growth.name; }

// Inputs are made once and cut to size: making them is not counted. Sizes are small: allocating takes longer beyond
// 1 KB, and a processor that copies 2 KB or more with one instruction stops after every byte.
std::vector<cv::KeyPoint> scattered(int count) {
  static const std::vector<cv::KeyPoint>& points = Inputs::large().keyPoints;
  return {points.begin(), points.begin() + count};
}

cv::Mat rows(int count) { return Inputs::large().descriptors.rowRange(0, count); }
cv::Mat movedRows(int count) { return Inputs::large().movedDescriptors.rowRange(0, count); }
const double* numbers() { return Inputs::large().series.data(); }

std::uint64_t match(int size) {
  std::vector<FBMatch> matches;
  std::vector<FBPrediction> predictions;
  const auto points = scattered(size);
  matchFeatures(points, rows(size), points, movedRows(size), {Exhaustive}, matches, predictions);
  return matches.size();
}

std::uint64_t matchTexture(int size) {
  std::vector<cv::Vec3i> matches;
  textureMatch(rows(size), movedRows(size), matches, {});
  return matches.size();
}

std::uint64_t describe(int size) {
  return Digest()(MirelScalingORB(Inputs::large().grey).getDescriptors(scattered(size)));
}

std::uint64_t solveRows(int size) {
  double x[4];
  return static_cast<std::uint64_t>(Lsq().lsq(numbers(), numbers() + 4 * size, x, size, 4, 0, 2, 0));
}

std::uint64_t solveColumns(int size) {
  double x[64];
  return static_cast<std::uint64_t>(Lsq().lsq(numbers(), numbers() + 64 * size, x, 64, size, 0, 2, 0));
}

std::uint64_t smoothSeries(int size) {
  std::vector<double> in(numbers(), numbers() + size), out;
  return sgCubicSmoother(in, out, 25);
}

std::uint64_t filter(int size) {
  Butterworth lowpass;
  std::vector<float> samples(static_cast<std::size_t>(size), 1.f);
  lowpass.process(samples, samples);
  return lowpass.updates();
}

std::uint64_t unite(int size) {
  UnionFind sets(size);
  for (int i = 1; i < size; ++i) sets.unionPartitions(i, i / 2);
  return static_cast<std::uint64_t>(sets.getNumPartitions());
}

MeshSimplification heightField(int quads) {
  MeshSimplification mesh;
  for (int i = 0; i < 3 * (quads + 1); ++i)
    mesh.vertices.emplace_back().p = {double(i / 3), double(i % 3), 0.01 * (i * i % 7)};
  for (int a = 0; a < 3 * quads; ++a) {
    if (a % 3 == 2) continue;
    const int corners[2][3] = {{a, a + 1, a + 3}, {a + 1, a + 4, a + 3}};
    for (const auto& v : corners) std::copy_n(v, 3, mesh.triangles.emplace_back().v);
  }
  return mesh;
}

std::uint64_t prepareMesh(int size) {
  MeshSimplification mesh = heightField(size);
  mesh.update_mesh(0);
  return mesh.refs.size();
}

class OperationCounts : public testing::TestWithParam<Growth> {
 protected:
  OperationCounts() {
    cv::setNumThreads(1);
    limitCpuVariant(CpuVariant::baseline);
  }
  ~OperationCounts() override {
    cv::setNumThreads(-1);
    limitCpuVariant(CpuVariant::avx512);
  }

  // By differences: what does not depend on the size drops out.
  double growth() const {
    const Growth& g = GetParam();
    double counts[3];
    tbb::task_arena(1).execute([&] {
      g.run(4 * g.size);  // first calls do more
      for (int i = 0; i < 3; ++i) counts[i] = instructionsOf([&] { g.run(g.size << i); });
    });
    std::printf("%.0f, %.0f, %.0f instructions\n", counts[0], counts[1], counts[2]);
    return (counts[2] - counts[1]) / (counts[1] - counts[0]);
  }
};

TEST_P(OperationCounts, GrowAsDocumented) {
  if (instructionsOf([] {}) == 0) GTEST_SKIP() << "no single steps on this system";
  const double factor = growth();
  EXPECT_GT(factor, 1.5);
  EXPECT_LT(factor, 1.25 * GetParam().factor);
}

INSTANTIATE_TEST_SUITE_P(Of, OperationCounts,
                         testing::Values(Growth{"match", 16, 4, match}, Growth{"matchTexture", 16, 4, matchTexture},
                                         Growth{"describe", 2, 2, describe}, Growth{"solveRows", 96, 2, solveRows},
                                         Growth{"solveColumns", 4, 4, solveColumns},
                                         Growth{"smoothSeries", 32, 2, smoothSeries}, Growth{"filter", 64, 2, filter},
                                         Growth{"unite", 64, 2, unite}, Growth{"prepareMesh", 4, 2, prepareMesh}),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace MirelAlgorithms
