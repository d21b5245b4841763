#include "meshes/MeshDistance.h"

#include <oneapi/tbb/parallel_for.h>

#include <Eigen/Core>
#include <algorithm>
#include <cmath>
#include <random>
#include <unsupported/Eigen/BVH>
#include <vector>

namespace mirel {

namespace {

using Eigen::Vector3d;
using Box = Eigen::AlignedBox3d;

struct Corners {
  Vector3d a, b, c;

  double area() const { return (b - a).cross(c - a).norm() / 2; }
};

Corners cornersOf(const Surface& surface, std::size_t triangle) {
  return {surface.corner(triangle, 0), surface.corner(triangle, 1), surface.corner(triangle, 2)};
}

double squaredDistance(const Vector3d& p, const Vector3d& from, const Vector3d& to) {
  const Vector3d along = to - from;
  const double length = along.squaredNorm();
  const double place = length > 0 ? std::clamp((p - from).dot(along) / length, 0.0, 1.0) : 0.0;
  return (from + place * along - p).squaredNorm();
}

/// From the plane where the point lies above the triangle, else from the nearest of the edges.
double squaredDistance(const Vector3d& p, const Corners& t) {
  const Vector3d normal = (t.b - t.a).cross(t.c - t.a);
  const auto inside = [&](const Vector3d& from, const Vector3d& to) {
    return normal.dot((to - from).cross(p - from)) >= 0;
  };
  const double length = normal.squaredNorm();
  if (length > 0 && inside(t.a, t.b) && inside(t.b, t.c) && inside(t.c, t.a)) {
    const double height = normal.dot(p - t.a);
    return height * height / length;
  }
  return std::min({squaredDistance(p, t.a, t.b), squaredDistance(p, t.b, t.c), squaredDistance(p, t.c, t.a)});
}

/// A surface in a hierarchy of boxes, to find the triangle that is nearest to a point.
class BoxTree {
 public:
  explicit BoxTree(const Surface& surface) : surface_(surface) {
    std::vector<int> numbers(surface.triangles.size());
    std::vector<Box> boxes(numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      const Corners t = cornersOf(surface, i);
      numbers[i] = static_cast<int>(i);
      boxes[i] = Box(t.a).extend(t.b).extend(t.c);
    }
    tree_.init(numbers.begin(), numbers.end(), boxes.begin(), boxes.end());
  }

  double distance(const Vector3d& point) const {
    Nearest nearest{surface_, point};
    return std::sqrt(Eigen::BVMinimize(tree_, nearest));
  }

 private:
  /// What the search asks for, in the names that it wants.
  struct Nearest {
    using Scalar = double;
    const Surface& surface;
    Vector3d point;

    double minimumOnVolume(const Box& box) const { return box.squaredExteriorDistance(point); }
    double minimumOnObject(int triangle) const {
      return squaredDistance(point, cornersOf(surface, static_cast<std::size_t>(triangle)));
    }
  };

  const Surface& surface_;
  Eigen::KdBVH<double, 3, int> tree_;
};

/// Uniform in [0, 1), the same on every machine.
double uniform(std::mt19937_64& source) { return static_cast<double>(source() >> 11) * 0x1p-53; }

/// One point in each of equal shares of the area, in the order of the triangles (Osada et al., "Shape distributions",
/// 2002, for the place in a triangle). Triangles count the same when none has an area.
std::vector<Vector3d> samplePoints(const Surface& surface) {
  std::vector<double> ends(surface.triangles.size());
  double area = 0;
  for (std::size_t i = 0; i < ends.size(); ++i) ends[i] = area += cornersOf(surface, i).area();
  for (std::size_t i = 0; i < ends.size() && area == 0; ++i) ends[i] = static_cast<double>(i + 1);
  std::mt19937_64 source(1);
  std::vector<Vector3d> points(MeshDistance::samples);
  std::size_t triangle = 0;
  for (int i = 0; i < MeshDistance::samples; ++i) {
    const double share = (i + uniform(source)) / MeshDistance::samples * ends.back();
    while (triangle + 1 < ends.size() && ends[triangle] <= share) ++triangle;
    const Corners t = cornersOf(surface, triangle);
    const double away = std::sqrt(uniform(source)), across = uniform(source);
    points[i] = (1 - away) * t.a + away * (1 - across) * t.b + away * across * t.c;
  }
  return points;
}

SurfaceDistance distancesTo(const BoxTree& tree, const std::vector<Vector3d>& points) {
  std::vector<double> distances(points.size());
  oneapi::tbb::parallel_for(std::size_t{0}, points.size(),
                            [&](std::size_t i) { distances[i] = tree.distance(points[i]); });
  SurfaceDistance result;
  for (const double distance : distances) {
    result.mean += distance;
    result.rms += distance * distance;
    result.largest = std::max(result.largest, distance);
  }
  const auto count = static_cast<double>(points.size());
  return {result.mean / count, std::sqrt(result.rms / count), result.largest};
}

}  // namespace

SurfaceDistance MeshDistance::both() const {
  return {(there.mean + back.mean) / 2, std::hypot(there.rms, back.rms) / std::sqrt(2.0),
          std::max(there.largest, back.largest)};
}

MeshDistance distanceBetween(const Surface& first, const Surface& second) {
  MeshDistance result;
  result.there = distancesTo(BoxTree(second), samplePoints(first));
  result.back = distancesTo(BoxTree(first), samplePoints(second));
  return result;
}

}  // namespace mirel
