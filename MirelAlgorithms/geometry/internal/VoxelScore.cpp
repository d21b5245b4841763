#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/geometry/internal/VoxelScore.h>
#include <tbb/blocked_range.h>
#include <tbb/parallel_reduce.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <vector>

namespace MirelAlgorithms {
namespace {

using Vector = Eigen::Vector3d;

constexpr double toleranceFactor = 0.001;

struct Sample {
  int index;
  Vector position;
  double length;          // distance from the origin of the world
  double sensorDistance;  // mean distance from the first three sensor points of its own pose
};

Sample sampleOf(const SeenScene& scene, int index) {
  const Vector& q = scene.points[static_cast<std::size_t>(index)];
  const auto& s = scene.sensors[static_cast<std::size_t>(scene.poseOfPoint[static_cast<std::size_t>(index)])];
  return {index, q, q.norm(), ((q - s[1]).norm() + (q - s[0]).norm() + (q - s[2]).norm()) / 3};
}

double squaredReach(double distance, double rounding) {
  const double reach = 1.001 * toleranceFactor * distance + rounding;
  return reach * reach;
}

// A line, and the square of the largest tolerance as far as the line decides it.
struct Line {
  Vector from, to, direction;
  double square, reach;

  Line(const Vector& from_, const Vector& to_, double rounding)
      : from(from_),
        to(to_),
        direction(to - from),
        square(direction.squaredNorm()),
        reach(squaredReach(std::sqrt(square), rounding)) {}
};

// Dividing the tolerance by the distance from the world's origin, not by the length of the line, is intended.
bool liesOnLine(const Sample& sample, const Line& line) {
  const double t = (sample.position - line.from).dot(line.direction) / line.direction.dot(line.direction);
  if (!(0.0 <= t && t <= 1.0)) return false;
  const Vector foot = line.from + t * line.direction;
  const double tolerance = std::max(sample.sensorDistance, (foot - line.to).norm()) * toleranceFactor;
  return t > tolerance / sample.length && (sample.position - foot).norm() <= tolerance;
}

// The samples once more for a quick first look at all of them, component by component.
struct Samples {
  std::vector<Sample> each;
  std::vector<double> x, y, z;
  std::vector<double> reach;  // square of the largest tolerance, as far as the sample decides it
  double rounding;            // of positions; generous
};

Samples samplesOf(const SeenScene& scene, const std::vector<int>& points) {
  Samples samples;
  samples.rounding = 1e-13 * scene.extent;
  for (const int index : points) {
    const Sample sample = sampleOf(scene, index);
    samples.each.push_back(sample);
    samples.x.push_back(sample.position[0]);
    samples.y.push_back(sample.position[1]);
    samples.z.push_back(sample.position[2]);
    samples.reach.push_back(squaredReach(sample.sensorDistance, samples.rounding));
  }
  return samples;
}

// Samples that are looked at together.
struct Block {
  std::size_t begin, end;
};

// Whether some sample of a block may lie on the line, without division and root: yes more often than `liesOnLine`.
MIREL_ALWAYS_INLINE bool anyInReach(const Samples& samples, const Block& block, const Line& line) {
  const double square = line.square, reach = line.reach;
  if (!(square > 1e-200)) return true;  // no bits would be left
  const Vector &from = line.from, &direction = line.direction;
  const double px = from[0], py = from[1], pz = from[2], dx = direction[0], dy = direction[1], dz = direction[2];
  const double *const x = samples.x.data(), *const y = samples.y.data(), *const z = samples.z.data();
  const double* const reaches = samples.reach.data();
  std::size_t outside = 0;
  for (std::size_t i = block.begin; i < block.end; ++i) {
    const double qx = x[i] - px, qy = y[i] - py, qz = z[i] - pz;
    const double cx = qy * dz - qz * dy, cy = qz * dx - qx * dz, cz = qx * dy - qy * dx;
    const double farthest = reaches[i] < reach ? reach : reaches[i];
    outside += cx * cx + cy * cy + cz * cz > farthest * square;
  }
  return outside < block.end - block.begin;
}

bool anyInReachBaseline(const Samples& samples, const Block& block, const Line& line) {
  return anyInReach(samples, block, line);
}

MIREL_TARGET_AVX2 bool anyInReachAvx2(const Samples& samples, const Block& block, const Line& line) {
  return anyInReach(samples, block, line);
}

unsigned scoreOfRay(const SeenScene& scene, const Samples& samples, int ray) {
  constexpr std::size_t blockSize = 32;
  const auto look = cpuVariant() >= CpuVariant::avx2 ? anyInReachAvx2 : anyInReachBaseline;
  const auto index = static_cast<std::size_t>(ray);
  const std::size_t count = samples.each.size();
  unsigned score = 0;
  for (const Vector& to : scene.sensors[static_cast<std::size_t>(scene.poseOfPoint[index])]) {
    const Line line(scene.points[index], to, samples.rounding);
    for (std::size_t begin = 0; begin < count; begin += blockSize) {
      const Block block = {begin, std::min(begin + blockSize, count)};
      if (!look(samples, block, line)) continue;
      for (std::size_t i = block.begin; i < block.end; ++i)
        if (samples.each[i].index != ray && liesOnLine(samples.each[i], line)) ++score;
    }
  }
  return score;
}

}  // namespace

int voxelScore(const SeenScene& scene, const std::vector<int>& points, const std::vector<int>& rays) {
  const Samples samples = samplesOf(scene, points);
  const unsigned score = tbb::parallel_reduce(
      tbb::blocked_range<std::size_t>(0, rays.size()), 0u,
      [&](const tbb::blocked_range<std::size_t>& range, unsigned sum) {
        for (std::size_t i = range.begin(); i < range.end(); ++i) sum += scoreOfRay(scene, samples, rays[i]);
        return sum;
      },
      std::plus<>());
  return static_cast<int>(score);
}

}  // namespace MirelAlgorithms
