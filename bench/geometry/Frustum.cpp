// Overlap of views beside collision libraries, points in view and view scores beside bare loops.
#include <MirelAlgorithms/geometry/Frustum.h>
#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <random>
#include <vector>
#if MIREL_BENCH_FCL
#include <ccd/ccd.h>
#include <fcl/geometry/shape/convex.h>
#include <fcl/narrowphase/collision.h>
#endif

namespace {

using MirelAlgorithms::Frustum;
using MirelAlgorithms::Mat4d;
using Vector = MirelAlgorithms::Vec3d<double>;

constexpr double fov = 1.0;
constexpr std::size_t pairCount = 2000;

Mat4d randomPose(std::mt19937& random, double extent) {
  std::normal_distribution<double> normal;
  double q[4], square = 0.0;
  for (double& part : q) {
    part = normal(random);
    square += part * part;
  }
  for (double& part : q) part /= std::sqrt(square);
  const auto [x, y, z, w] = q;
  const double axes[9] = {1 - 2 * (y * y + z * z), 2 * (x * y + w * z),     2 * (x * z - w * y),
                          2 * (x * y - w * z),     1 - 2 * (x * x + z * z), 2 * (y * z + w * x),
                          2 * (x * z + w * y),     2 * (y * z - w * x),     1 - 2 * (x * x + y * y)};
  Mat4d pose;
  for (int i = 0; i < 9; ++i) pose[i / 3 * 4 + i % 3] = axes[i];
  for (int i = 0; i < 3; ++i) pose[12 + i] = extent * normal(random);
  return pose;
}

std::vector<Frustum> randomViews(std::size_t count) {
  std::mt19937 random(5);
  std::vector<Frustum> views;
  for (std::size_t i = 0; i < count; ++i) views.emplace_back(randomPose(random, 6.0), fov);
  return views;
}

void views_intersect(benchmark::State& state) {
  const std::vector<Frustum> views = randomViews(2 * pairCount);
  int met = 0;
  for (auto _ : state) {
    met = 0;
    for (std::size_t i = 0; i < pairCount; ++i) met += Frustum::intersect(views[2 * i], views[2 * i + 1]);
    benchmark::DoNotOptimize(met);
  }
  state.counters["meet"] = met;
}
BENCHMARK(views_intersect)->Unit(benchmark::kMicrosecond);

#if MIREL_BENCH_FCL

// The eight corners of a view, first the near ones, in camera coordinates.
std::array<fcl::Vector3d, 8> cornersOf(const Frustum& view) {
  const double slope = 2.0 * std::sin(view.fov / 2);
  std::array<fcl::Vector3d, 8> corners;
  for (std::size_t i = 0; i < 8; ++i) {
    const double depth = i < 4 ? view.near : view.far;
    corners[i] = {(i & 1 ? 1 : -1) * slope * depth, (i & 2 ? 1 : -1) * slope * depth, -depth};
  }
  return corners;
}

fcl::Transform3d transformOf(const Mat4d& pose) {
  fcl::Transform3d transform;
  transform.matrix() = Eigen::Map<const Eigen::Matrix4d>(&pose[0]);
  return transform;
}

void views_intersect_fcl(benchmark::State& state) {
  const std::vector<Frustum> views = randomViews(2 * pairCount);
  const auto corners = cornersOf(views[0]);
  const auto vertices = std::make_shared<std::vector<fcl::Vector3d>>(corners.begin(), corners.end());
  const auto faces = std::make_shared<std::vector<int>>(std::initializer_list<int>{
      4, 0, 2, 3, 1, 4, 4, 5, 7, 6, 4, 0, 1, 5, 4, 4, 2, 6, 7, 3, 4, 0, 4, 6, 2, 4, 1, 3, 7, 5});
  const fcl::Convexd shape(vertices, 6, faces);
  std::vector<fcl::Transform3d> transforms;
  for (const Frustum& view : views) transforms.push_back(transformOf(view.pose));
  fcl::CollisionRequestd request;
  int met = 0;
  for (auto _ : state) {
    met = 0;
    for (std::size_t i = 0; i < pairCount; ++i) {
      fcl::CollisionResultd result;
      met += fcl::collide(&shape, transforms[2 * i], &shape, transforms[2 * i + 1], request, result) > 0;
    }
    benchmark::DoNotOptimize(met);
  }
  state.counters["meet"] = met;
}
BENCHMARK(views_intersect_fcl)->Unit(benchmark::kMicrosecond);

using Corners = std::array<fcl::Vector3d, 8>;

void farthestCorner(const void* object, const ccd_vec3_t* direction, ccd_vec3_t* farthest) {
  const auto& corners = *static_cast<const Corners*>(object);
  const fcl::Vector3d d(direction->v[0], direction->v[1], direction->v[2]);
  const fcl::Vector3d* best = &corners[0];
  for (const fcl::Vector3d& corner : corners)
    if (corner.dot(d) > best->dot(d)) best = &corner;
  ccdVec3Set(farthest, best->x(), best->y(), best->z());
}

void centreOfCorners(const void* object, ccd_vec3_t* centre) {
  fcl::Vector3d sum = fcl::Vector3d::Zero();
  for (const fcl::Vector3d& corner : *static_cast<const Corners*>(object)) sum += corner / 8.0;
  ccdVec3Set(centre, sum.x(), sum.y(), sum.z());
}

// The corners are in the world beforehand.
template <class Test>
void viewsIntersectCcd(benchmark::State& state, Test* test) {
  std::vector<Corners> views;
  for (const Frustum& view : randomViews(2 * pairCount)) {
    views.push_back(cornersOf(view));
    for (fcl::Vector3d& corner : views.back()) corner = transformOf(view.pose) * corner;
  }
  ccd_t ccd;
  CCD_INIT(&ccd);
  ccd.support1 = ccd.support2 = farthestCorner;
  ccd.center1 = ccd.center2 = centreOfCorners;
  ccd.max_iterations = 100;
  int met = 0;
  for (auto _ : state) {
    met = 0;
    for (std::size_t i = 0; i < pairCount; ++i) met += test(&views[2 * i], &views[2 * i + 1], &ccd);
    benchmark::DoNotOptimize(met);
  }
  state.counters["meet"] = met;
}
void views_intersect_ccd_gjk(benchmark::State& state) { viewsIntersectCcd(state, ccdGJKIntersect); }
void views_intersect_ccd_mpr(benchmark::State& state) { viewsIntersectCcd(state, ccdMPRIntersect); }
BENCHMARK(views_intersect_ccd_gjk)->Unit(benchmark::kMicrosecond);
BENCHMARK(views_intersect_ccd_mpr)->Unit(benchmark::kMicrosecond);

#endif

constexpr std::size_t poseCount = 100;

std::vector<Mat4d> nearbyPoses() {
  std::mt19937 random(7);
  std::vector<Mat4d> poses;
  for (std::size_t i = 0; i < poseCount; ++i) poses.push_back(randomPose(random, 1.0));
  return poses;
}

std::vector<Vector> randomPoints() {
  std::mt19937 random(6);
  std::uniform_real_distribution<double> coordinate(-4.0, 4.0);
  std::vector<Vector> points(10000);
  for (Vector& p : points) p = {coordinate(random), coordinate(random), coordinate(random)};
  return points;
}

void view_contains(benchmark::State& state) {
  const std::vector<Vector> points = randomPoints();
  const Frustum view(nearbyPoses()[0], 2.0);
  int inside = 0;
  for (auto _ : state) {
    inside = 0;
    for (const Vector& p : points) inside += Frustum::contains(view, p);
    benchmark::DoNotOptimize(inside);
  }
  state.counters["inside"] = inside;
}

void view_contains_cone_test(benchmark::State& state) {
  const std::vector<Vector> points = randomPoints();
  const Frustum view(nearbyPoses()[0], 2.0);
  const Mat4d& m = view.pose;
  const double cosine = std::cos(view.fov / 2);
  int inside = 0;
  for (auto _ : state) {
    inside = 0;
    for (const Vector& p : points) {
      const double x = p.x - m[12], y = p.y - m[13], z = p.z - m[14];
      const double depth = -(m[8] * x + m[9] * y + m[10] * z);
      inside += depth >= view.near && depth <= view.far && depth >= cosine * std::sqrt(x * x + y * y + z * z);
    }
    benchmark::DoNotOptimize(inside);
  }
  state.counters["inside"] = inside;
}
BENCHMARK(view_contains)->Unit(benchmark::kMicrosecond);
BENCHMARK(view_contains_cone_test)->Unit(benchmark::kMicrosecond);

void view_check_pose(benchmark::State& state) {
  const std::vector<Mat4d> poses = nearbyPoses();
  Frustum view(Mat4d(), fov);
  for (auto _ : state)
    for (const Mat4d& pose : poses) benchmark::DoNotOptimize(view.checkPose(pose));
}

// The same arithmetic without any test: the score of all points.
void view_check_pose_limit(benchmark::State& state) {
  const std::vector<Mat4d> poses = nearbyPoses();
  Frustum view(Mat4d(), fov);
  view.checkPose(poses[0]);
  for (auto _ : state)
    for (const Mat4d& m : poses) {
      double score = 0.0;
      for (const Vector& p : view.samplePts) {
        const double x = m[0] * p.x + m[4] * p.y + m[8] * p.z + m[12];
        const double y = m[1] * p.x + m[5] * p.y + m[9] * p.z + m[13];
        const double z = m[2] * p.x + m[6] * p.y + m[10] * p.z + m[14];
        score += 1.0 / std::sqrt(x * x + y * y + z * z);
      }
      benchmark::DoNotOptimize(score);
    }
}
BENCHMARK(view_check_pose)->Unit(benchmark::kMicrosecond);
BENCHMARK(view_check_pose_limit)->Unit(benchmark::kMicrosecond);

}  // namespace
