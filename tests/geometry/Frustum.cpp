// Stand for the macros of a Windows header.
#define near
#define far
#include <MirelAlgorithms/geometry/Frustum.h>
#undef near
#undef far
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>
#include <vector>

#include "RandomPose.h"

using MirelAlgorithms::Frustum;
using MirelAlgorithms::Mat4d;
using Point = MirelAlgorithms::Vec3d<double>;
using Eigen::Vector3d;

namespace {

constexpr double pi = 3.141592653589793;
constexpr double infinity = std::numeric_limits<double>::infinity();

Mat4d scaled(Mat4d m, double factor) {
  for (int i = 0; i < 12; ++i) m[i] *= factor;
  return m;
}

Mat4d movedBy(double x, double y, double z) {
  Mat4d m;
  m[12] = x, m[13] = y, m[14] = z;
  return m;
}

TEST(Frustum, constructorsFillTheFields) {
  Mat4d pose = toMat4d(RandomPoses(1).pose(2.0).matrix());
  const Frustum first(pose, 1.2), second(pose, 0.5, 7.0, 1.2, 1);
  const auto fields = [](const Frustum& f) {
    return std::tuple(f.near, f.far, f.fov, f.viewSign, f.aspect, f.tanHalfFovX, f.tanHalfFovY, f.samplePts.size());
  };
  constexpr double wide = 1.3333333333333333;
  EXPECT_EQ(fields(first), std::tuple(0.4, 10.0, 1.2, -1, wide, std::tan(1.2 / 2), std::tan((1.2 / wide) / 2), 0u));
  EXPECT_EQ(fields(second), std::tuple(0.5, 7.0, 1.2, 1, 1.0, std::tan(1.2 / 2), std::tan(1.2 / 2), 0u));
  EXPECT_EQ(first.axisPoint, Point(pose[12] + pose[8], pose[13] + pose[9], pose[14] + pose[10]));
}

TEST(Frustum, sampleLatticeIsABoxOfAngles) {
  Frustum f(Mat4d(), 1.1);
  f.checkPose(Mat4d());
  ASSERT_EQ(f.samplePts.size(), 1000u);
  const double step = 0.1111111111111111, height = 1.1 / 1.3333333333333333;
  EXPECT_EQ(f.samplePts[357],
            Point(3 * 1.1 * step - 0.55, 5 * height * step - height / 2, 7 * (10.0 - 0.4) * step + 0.4));
}

// The score by Eigen, point by point; -1 where a point lies too near a side to tell.
double scoreByEigen(const Frustum& f, const Eigen::Isometry3d& own, const Eigen::Isometry3d& other) {
  double score = 0.0;
  for (const Point& s : f.samplePts) {
    const Vector3d q = other.inverse() * own * Vector3d(s.x, s.y, s.z);
    const double margins[] = {q.z() - f.near, f.far - q.z(), f.tanHalfFovX - std::abs(q.x() / q.z()),
                              f.tanHalfFovY - std::abs(q.y() / q.z())};
    const double margin = *std::min_element(std::begin(margins), std::end(margins));
    if (std::abs(margin) < 1e-9) return -1.0;
    if (margin > 0.0) score += 1.0 / q.norm();
  }
  return score;
}

TEST(Frustum, checkPoseAddsUpWhatIsSeen) {
  RandomPoses random(2);
  int compared = 0;
  for (int round = 0; round < 200; ++round) {
    const Eigen::Isometry3d own = random.pose(3.0), other = own * Eigen::Translation3d(random.normal(), 0.3, -0.5) *
                                                            Eigen::AngleAxisd(random.normal(), Vector3d::UnitY());
    Frustum f(toMat4d(own.matrix()), 0.3, 6.0, random.uniform(0.3, 2.5), -1);
    const double score = f.checkPose(toMat4d(other.matrix())), expected = scoreByEigen(f, own, other);
    if (expected < 0.0) continue;
    EXPECT_NEAR(score, expected, 1e-9 * (1.0 + expected));
    compared += expected > 0.0;
  }
  EXPECT_GT(compared, 100);
}

TEST(Frustum, containsIsACone) {
  const Mat4d pose, turned = toMat4d(RandomPoses(4).pose(5.0).matrix());
  Mat4d projective;
  projective[15] = 2.0;  // w of a half on the way back
  const Frustum minus(pose, 1.0, 4.0, 1.0, -1), plus(pose, 1.0, 4.0, 1.0, 1);
  const Frustum turnedView(turned, 1.0, 4.0, 1.0, 1);
  const Point onItsAxis(turned[12] + 2 * turned[8], turned[13] + 2 * turned[9], turned[14] + 2 * turned[10]);
  const double edge = std::tan(0.5);
  const struct {
    const char* name;
    Frustum f;
    Point p;
    bool inside;
  } cases[] = {
      {"behind", minus, {0, 0, 2}, false},
      {"at near", plus, {0, 0, 1}, true},
      {"before near", plus, {0, 0, std::nextafter(1.0, 0.0)}, false},
      {"at far", plus, {0, 0, 4}, true},
      {"beyond far", plus, {0, 0, std::nextafter(4.0, 5.0)}, false},
      {"just inside the cone", plus, {2 * edge - 1e-12, 0, 2}, true},
      {"just outside the cone", plus, {2 * edge + 1e-12, 0, 2}, false},
      {"in the corner of a pyramid", plus, {1.9 * edge, 1.9 * edge, 2}, false},
      {"no width, on the axis", Frustum(pose, 1.0, 4.0, 0.0, 1), {0, 0, 2}, true},
      {"too near for a direction", Frustum(pose, 0.0, 4.0, 0.1, 1), {9e-6, 0, 1e-7}, true},
      {"near enough for one", Frustum(pose, 0.0, 4.0, 0.1, 1), {2e-5, 0, 1e-7}, false},
      {"divided by w", Frustum(projective, 0.1, 4.0, 1.0, 1), {0, 0, 2}, true},
      {"scaled down, by thousands of millions", Frustum(scaled(pose, 1e-14), 1.0, 4.0, 1.0, 1), {0, 0, 2e-14}, true},
      {"scaled down below the pivot", Frustum(scaled(pose, 1e-15), 1.0, 4.0, 1.0, 1), {0, 0, 2e-15}, false},
      {"a turned camera", turnedView, onItsAxis, true},
  };
  for (const auto& [name, f, p, inside] : cases) EXPECT_EQ(Frustum::contains(f, p), inside) << name;
}

TEST(Frustum, sameViewDirection) {
  const Mat4d pose, turned = toMat4d(Eigen::Isometry3d(Eigen::AngleAxisd(0.5, Vector3d::UnitX())).matrix());
  const double slightly = 1e-300;
  EXPECT_TRUE(Frustum::sameViewDirection(pose, pose, slightly));
  EXPECT_TRUE(Frustum::sameViewDirection(pose, turned, 0.5 + 1e-9));
  EXPECT_FALSE(Frustum::sameViewDirection(pose, turned, 0.5 - 1e-9));
  EXPECT_TRUE(Frustum::sameViewDirection(scaled(pose, 3.0), scaled(turned, 0.1), 0.5 + 1e-9));
  EXPECT_FALSE(Frustum::sameViewDirection(pose, scaled(pose, -1.0), 3.0));
  EXPECT_TRUE(Frustum::sameViewDirection(scaled(pose, 1e-5), turned, slightly)) << "too short to have a direction";
}

using Corners = Eigen::Matrix<double, 3, 8>;

Corners cornersOf(const Eigen::Isometry3d& pose, double nearest, double farthest, double slopeX, double slopeY) {
  Corners corners;
  for (int i = 0; i < 8; ++i) {
    const double depth = i & 4 ? farthest : nearest;
    corners.col(i) = pose * Vector3d((i & 1 ? 1 : -1) * slopeX * depth, (i & 2 ? 1 : -1) * slopeY * depth, -depth);
  }
  return corners;
}

// Widest gap between two convex bodies over the normals of faces and the cross products of edges; negative when they
// overlap (separating axis theorem).
double gapBetween(const Corners& a, const Corners& b) {
  std::vector<Vector3d> edges;
  for (const Corners* c : {&a, &b})
    for (const auto& [from, to] : {std::pair(0, 1), {0, 2}, {0, 4}, {1, 5}, {2, 6}, {3, 7}})
      edges.push_back(c->col(to) - c->col(from));
  double widest = -infinity;
  for (const Vector3d& e : edges)
    for (const Vector3d& f : edges) {
      const Vector3d axis = e.cross(f);
      if (axis.norm() < 1e-9) continue;
      const Eigen::RowVectorXd onAxisA = axis.normalized().transpose() * a, onAxisB = axis.normalized().transpose() * b;
      widest = std::max({widest, onAxisB.minCoeff() - onAxisA.maxCoeff(), onAxisA.minCoeff() - onAxisB.maxCoeff()});
    }
  return widest;
}

TEST(Frustum, intersectAgreesWithSeparatingAxes) {
  RandomPoses random(5);
  int meet[2] = {};
  for (int round = 0; round < 3000; ++round) {
    const double unit = round % 3 == 0 ? 1.0 : round % 3 == 1 ? 1000.0 : 1e-3;
    const Eigen::Isometry3d a = random.pose(5.0 * unit), b = random.pose(5.0 * unit);
    const double n1 = random.uniform(0, 1) * unit, f1 = n1 + random.uniform(0, 9) * unit;
    const double n2 = random.uniform(0, 1) * unit, f2 = n2 + random.uniform(0, 9) * unit;
    const double slopeX = random.uniform(0.1, 3.0), slopeY = random.uniform(0.1, 3.0);
    const double gap = gapBetween(cornersOf(a, n1, f1, slopeX, slopeY), cornersOf(b, n2, f2, slopeX, slopeY));
    if (std::abs(gap) < 1e-9 * unit) continue;
    const Mat4d poseA = toMat4d(a.matrix()), poseB = toMat4d(b.matrix());
    EXPECT_EQ(Frustum::intersect(poseA, n1, f1, poseB, n2, f2, 0.2 * slopeX, 0.2 * slopeY, 0.2), gap < 0.0)
        << "round " << round << ", gap " << gap;
    ++meet[gap < 0.0];
  }
  EXPECT_GT(meet[0], 300);
  EXPECT_GT(meet[1], 300);
}

TEST(Frustum, intersectOfTwoViews) {
  const Mat4d pose, back = toMat4d(Eigen::Isometry3d(Eigen::AngleAxisd(pi, Vector3d::UnitY())).matrix());
  const Frustum f(pose, 1.0, 3.0, 1.0, -1);
  const double slope = 2.0 * std::sin(0.5);
  const auto at = [](Mat4d m, double fov = 1.0) { return Frustum(m, 1.0, 3.0, fov, 1); };
  const struct {
    const char* name;
    Frustum g;
    bool meet;
  } cases[] = {
      {"back to back", at(back), false},
      {"side by side and touching", at(movedBy(2 * 3 * slope, 0, 0)), true},
      {"side by side and apart", at(movedBy(2 * 3 * slope + 1e-6, 0, 0)), false},
      {"one behind the other and touching", at(movedBy(0, 0, -2)), true},
      {"one behind the other and apart", at(movedBy(0, 0, -2 - 1e-6)), false},
      {"another field of view", at(pose, 1.0 + 1e-15), false},
      {"the next field of view", at(pose, std::nextafter(1.0, 2.0)), true},
      {"scaled to a third", at(scaled(pose, 1.0 / 3)), true},
      {"scaled to a quarter", at(scaled(pose, 0.25)), false},
      {"the smaller near distance decides: 0 has no sides", {pose, 0.0, 3.0, 1.0, 1}, false},
  };
  for (const auto& [name, g, meet] : cases) {
    EXPECT_EQ(Frustum::intersect(f, g), meet) << name;
    EXPECT_EQ(Frustum::intersect(g, f), meet) << name << ", the other way round";
  }
  const Frustum flat(pose, 1.0, 1.0, 1.0, 1), half(pose, 1.0, 2.0, pi, 1);
  EXPECT_TRUE(Frustum::intersect(flat, flat) && Frustum::intersect(half, half));
  EXPECT_TRUE(Frustum::intersect(pose, movedBy(0, 0, -2), 1.0, 3.0, 0.5, 0.5, 0.5)) << "range for both";
  EXPECT_FALSE(Frustum::intersect(pose, movedBy(0, 0, -2.1), 1.0, 3.0, 0.5, 0.5, 0.5));
}

}  // namespace
