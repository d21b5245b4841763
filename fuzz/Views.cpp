/// Views and what they have seen: every question ends, answers are numbers in their range, a point in two views makes
/// them overlap, and the voxel grid is the one that plain steps build.
#include <MirelAlgorithms/geometry/Frustum.h>
#include <MirelAlgorithms/geometry/VisibilityCheck.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

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
  MIREL_CHECK(!overlap || (near <= far && s1 >= std::numeric_limits<double>::epsilon()));
  const double score = a.checkPose(b.pose);
  MIREL_CHECK(score >= 0 && a.samplePts.size() <= 1000 && a.checkPose(b.pose) == score);
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
  const bool inA = Frustum::contains(a, point), inB = Frustum::contains(b, point);
  if (inA && inB) MIREL_CHECK(Frustum::intersect(a, b));
  if (inA) MIREL_CHECK(Frustum::intersect(a, a));
  MIREL_CHECK(Frustum::sameViewDirection(a.pose, a.pose, 0.1));
  Frustum whole(a.pose, near, far, fov, -1);
  const double score = whole.checkPose(b.pose);
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
  const int defect = points.empty() ? 0 : data.ConsumeIntegralInRange(0, 24);
  if (defect == 1) points.back().second = 1000;
  if (defect == 2) points.back().first.y() = data.PickValueInArray({double(NAN), 1e300, double(INFINITY), -3e9});

  VisibilityCheck check(voxelSize);
  LiteralGrid literal(voxelSize);
  const auto worldIsHuge = [&] {
    return std::any_of(points.begin(), points.end(), [&](const auto& point) {
      const Vector3d p = poses.at(point.second).transpose().template topRows<3>() * point.first.homogeneous();
      return !((p / (voxelSize > 0 ? voxelSize : 0.25)).cwiseAbs().maxCoeff() < 2147483647.0) || !p.allFinite();
    });
  };
  bool missing = false, refusal = false;
  try {
    refusal = refused([&] { check.updateGrid(points, poses, sensors); });
  } catch (const std::out_of_range&) {
    missing = true;
  }
  MIREL_CHECK(missing == (defect == 1 && !std::isinf(voxelSize)));
  if (defect != 1 && worldIsHuge()) MIREL_CHECK(refusal);
  if (missing || refusal) {
    MIREL_CHECK(check.getGrid().cells().empty() && std::get<4>(check.getCurrentMax()) == 0);
    return;
  }
  // Sight lines from far away take the plain steps too long.
  for (const auto& [number, pose] : poses)
    if (!(pose.cwiseAbs().maxCoeff() < 100)) return;
  for (const auto& point : points)
    if (!(point.first.cwiseAbs().maxCoeff() < 100)) return;
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
  VisibilityCheck copy(check);
  for (std::size_t left = cells.size() + 1; left > 0; --left) {
    const auto result = check.getCurrentMax();
    MIREL_CHECK(result == literal.getCurrentMax() && result == copy.getCurrentMax());
    if (std::get<4>(result) == 0) return;
  }
  MIREL_CHECK(false && "more regions than voxels");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  FuzzedDataProvider data(bytes, size);
  switch (data.ConsumeIntegralInRange(0, 3)) {
    case 0:
      anyViews(data);
      break;
    case 1:
      sharedPoint(data);
      break;
    default:
      seenVoxels(data);
  }
  return 0;
}
