#include <MirelAlgorithms/geometry/internal/VoxelScore.h>
#include <tbb/blocked_range.h>
#include <tbb/parallel_reduce.h>

#include <algorithm>
#include <cstddef>
#include <functional>

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

// Dividing the tolerance by the distance from the world's origin, not by the length of the line, is intended.
bool liesOnLine(const Sample& sample, const Vector& from, const Vector& to, const Vector& direction) {
  const double t = (sample.position - from).dot(direction) / direction.dot(direction);
  if (!(0.0 <= t && t <= 1.0)) return false;
  const Vector foot = from + t * direction;
  const double tolerance = std::max(sample.sensorDistance, (foot - to).norm()) * toleranceFactor;
  return t > tolerance / sample.length && (sample.position - foot).norm() <= tolerance;
}

int scoreOfRay(const SeenScene& scene, const std::vector<Sample>& samples, int ray) {
  const auto index = static_cast<std::size_t>(ray);
  const Vector& from = scene.points[index];
  int score = 0;
  for (const Vector& to : scene.sensors[static_cast<std::size_t>(scene.poseOfPoint[index])]) {
    const Vector direction = to - from;
    for (const Sample& sample : samples)
      if (sample.index != ray && liesOnLine(sample, from, to, direction)) ++score;
  }
  return score;
}

}  // namespace

int voxelScore(const SeenScene& scene, const std::vector<int>& points, const std::vector<int>& rays) {
  std::vector<Sample> samples;
  samples.reserve(points.size());
  for (const int index : points) samples.push_back(sampleOf(scene, index));
  return tbb::parallel_reduce(
      tbb::blocked_range<std::size_t>(0, rays.size()), 0,
      [&](const tbb::blocked_range<std::size_t>& range, int score) {
        for (std::size_t i = range.begin(); i < range.end(); ++i) score += scoreOfRay(scene, samples, rays[i]);
        return score;
      },
      std::plus<>());
}

}  // namespace MirelAlgorithms
