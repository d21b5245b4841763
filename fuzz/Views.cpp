/// Views and what they have seen: every question ends, answers are numbers in their range, a point in two views makes
/// them overlap, and the voxel grid is the one that plain steps build.
#include <MirelAlgorithms/geometry/Frustum.h>
#include <MirelAlgorithms/geometry/VisibilityCheck.h>

#include <cmath>

#include "Check.h"
#include "geometry/LiteralGrid.h"
#include "geometry/RandomPose.h"

namespace {

using namespace MirelAlgorithms;
using Algorithms::VisibilityCheck;
using Eigen::Vector3d;

Vector3d smallVector(FuzzedDataProvider& data, double unit) {
  const auto number = [&] { return unit * data.ConsumeIntegralInRange(-128, 127); };
  const double x = number(), y = number();
  return {x, y, number()};
}

Eigen::Isometry3d rigidPose(FuzzedDataProvider& data) {
  const Vector3d axis = smallVector(data, 1), at = smallVector(data, 1.0 / 64);
  const double angle = data.ConsumeFloatingPointInRange(-3.2, 3.2);
  const Eigen::Translation3d position(at);
  return axis.isZero() ? Eigen::Isometry3d(position) : position * Eigen::AngleAxisd(angle, axis.normalized());
}

VoskBase::Mat4d anyPose(FuzzedDataProvider& data) {
  VoskBase::Mat4d pose = toMat4d(rigidPose(data).matrix());
  for (int left = data.ConsumeIntegralInRange(0, 4); left > 0; --left)
    pose[data.ConsumeIntegralInRange(0, 15)] = anyReal<double>(data);
  return pose;
}

void anyViews(FuzzedDataProvider& data) {
  const double fov = anyReal<double>(data), near = anyReal<double>(data), far = anyReal<double>(data);
  Frustum a(anyPose(data), near, far, fov, data.ConsumeBool() ? 1 : -1), b(anyPose(data), fov);
  Frustum::intersect(a, b);
  Frustum::contains(a, {anyReal<double>(data), anyReal<double>(data), anyReal<double>(data)});
  Frustum::sameViewDirection(a.pose, b.pose, anyReal<double>(data));
  const double s1 = anyReal<double>(data), s2 = anyReal<double>(data), s3 = anyReal<double>(data);
  const bool overlap = Frustum::intersect(a.pose, b.pose, near, far, s1, s2, s3);
  MIREL_CHECK(overlap == Frustum::intersect(a.pose, near, far, b.pose, near, far, s1, s2, s3));
  MIREL_CHECK(a.checkPose(b.pose) >= 0 && a.samplePts.size() <= 1000);
}

// Up to this width the cone that `contains` looks into lies in the pyramid of `intersect`.
void sharedPoint(FuzzedDataProvider& data) {
  const double fov = data.ConsumeFloatingPointInRange(0.01, 2.0);
  const Eigen::Isometry3d poseA = rigidPose(data), poseB = rigidPose(data);
  const double near = data.ConsumeFloatingPointInRange(0.01, 1.0),
               far = near + data.ConsumeFloatingPointInRange(0.01, 8.0);
  Frustum a(toMat4d(poseA.matrix()), near, far, fov, -1), b(toMat4d(poseB.matrix()), near, far, fov, -1);
  const double distance = data.ConsumeFloatingPointInRange(0.0, 9.0);
  const Vector3d p = poseA * Vector3d(smallVector(data, 1.0 / 128).cwiseProduct(Vector3d(distance, distance, 0)) -
                                      distance * Vector3d::UnitZ());
  const VoskBase::Vec3d<double> point(p.x(), p.y(), p.z());
  if (Frustum::contains(a, point) && Frustum::contains(b, point)) MIREL_CHECK(Frustum::intersect(a, b));
  const double score = a.checkPose(b.pose);
  MIREL_CHECK(score >= 0 && score <= 1000 / near * 1.001);
}

// Few numbers make many points, so that voxels have enough of them.
void seenVoxels(FuzzedDataProvider& data) {
  const double voxelSize = data.PickValueInArray({0.25, 0.1, 1.0, 3.0, 0.0, -1.0, 1e9, double(NAN), double(INFINITY)});
  std::map<int, Eigen::Matrix4d> poses;
  for (int left = data.ConsumeIntegralInRange(1, 6); left > 0; --left)
    poses[data.ConsumeIntegralInRange(-40, 40)] = rigidPose(data).matrix().transpose();
  poses[0] = poses[32] = Eigen::Matrix4d::Identity();
  if (data.ConsumeIntegralInRange(0, 15) == 0) poses[32](data.ConsumeIntegralInRange(0, 11)) = anyReal<double>(data);
  VisibilityCheck::Points points;
  for (int left = data.ConsumeIntegralInRange(0, 12); left > 0; --left) {
    const Vector3d first = smallVector(data, 1.0 / 64), step = smallVector(data, 1.0 / 4096);
    const int a = data.ConsumeIntegralInRange(-40, 40), b = data.ConsumeBool() ? 32 : a;
    for (int i = data.ConsumeIntegralInRange(0, 40); i >= 0; --i)
      points.emplace_back(first + i * step, poses.count(i % 2 ? a : b) ? (i % 2 ? a : b) : 0);
  }
  std::vector<Vector3d> sensors;
  for (int left = data.ConsumeIntegralInRange(0, 5); left > 0; --left) sensors.push_back(smallVector(data, 1.0 / 64));

  VisibilityCheck check(voxelSize);
  if (refused([&] { check.updateGrid(points, poses, sensors); })) {
    MIREL_CHECK(check.getGrid().cells().empty());
    return;
  }
  // Sight lines from far away take the plain steps too long.
  for (const auto& [number, pose] : poses)
    if (!(pose.cwiseAbs().maxCoeff() < 100)) return;
  LiteralGrid literal(voxelSize);
  literal.updateGrid(points, poses, sensors);
  const VisibilityCheck::Cells& cells = check.getGrid().cells();
  MIREL_CHECK(cells.size() == literal.cells.size());
  for (const auto& [key, wanted] : literal.cells) {
    const auto found = cells.find(key);
    MIREL_CHECK(found != cells.end());
    const VisibilityCheck::GridElement& cell = found->second;
    MIREL_CHECK(cell.points == wanted.points && cell.rays == wanted.rays && cell.score == wanted.score);
    MIREL_CHECK(cell.firstPose == wanted.firstPose && cell.lastPose == wanted.lastPose);
  }
  int score = 0;
  do {
    const auto result = check.getCurrentMax();
    MIREL_CHECK(result == literal.getCurrentMax());
    score = std::get<4>(result);
  } while (score > 0);
}

}  // namespace

void feed(FuzzedDataProvider& data) {
  constexpr void (*subjects[])(FuzzedDataProvider&) = {anyViews, sharedPoint, seenVoxels, seenVoxels};
  data.PickValueInArray(subjects)(data);
}
