#include <MirelAlgorithms/geometry/Frustum.h>
#include <MirelAlgorithms/geometry/internal/HalfSpaces.h>
#include <MirelAlgorithms/geometry/internal/LatticeScore.h>
#include <MirelAlgorithms/geometry/internal/Pose.h>

#include <Eigen/Core>
#include <Eigen/LU>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

// Macros of Windows, where the host's headers bring them.
#undef near
#undef far

namespace MirelAlgorithms {
namespace {

using Vector = Vec3d<double>;

constexpr double pi = 3.141592653589793;
constexpr double epsilon = std::numeric_limits<double>::epsilon();
constexpr int samplesPerSide = 10;
constexpr double shortestDirection = 1e-5;

double length(const Vector& v) { return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z); }

// 0 when one of the vectors is too short to have a direction.
double angleBetween(const Vector& a, const Vector& b) {
  const double lengthA = length(a), lengthB = length(b);
  if (!(lengthA > shortestDirection && lengthB > shortestDirection)) return 0.0;
  const double cosine = (a.x * b.x + a.y * b.y + a.z * b.z) / (lengthA * lengthB);
  return std::acos(std::clamp(cosine, -1.0, 1.0));
}

// What `contains` needs of a view. The last one in each thread is kept: a view is usually asked about many points.
struct Cone {
  Mat4d pose;
  double fov = 0.0;
  std::optional<Mat4d> inverse = Mat4d();
  double cosine = 1.0;  // of half the angle
};

const Cone& coneOf(const Mat4d& pose, double fov) {
  thread_local Cone last;
  // Equal bits are meant. NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
  if (std::memcmp(&last.pose, &pose, sizeof pose) != 0) {
    last.inverse = generalInverse(pose);
    last.pose = pose;
  }
  if (last.fov != fov) {
    last.fov = fov;
    last.cosine = std::cos(fov / 2);
  }
  return last;
}

// Whether q is at most half the angle of the cone away from the axis (0, 0, sign). The cosine decides where it is safe.
bool liesInCone(const Cone& cone, const Vector& q, double sign) {
  constexpr double rounding = 1e-9;
  const double cosine = sign * q.z / (length(q) * std::abs(sign));
  const bool clear = cone.fov >= 0.0 && length(q) > 2 * shortestDirection && std::abs(cosine - cone.cosine) > rounding;
  return clear ? cosine > cone.cosine : angleBetween(q, Vector(0.0, 0.0, sign)) <= cone.fov / 2;
}

// A point of the world in the camera's coordinates.
Vector transformed(const Mat4d& m, const Vector& p) {
  const auto row = [&](int i) { return m[i] * p.x + m[4 + i] * p.y + m[8 + i] * p.z + m[12 + i]; };
  Vector q(row(0), row(1), row(2));
  const double w = row(3);
  if (w != 1.0 && std::round(w * 100000.0) != 0.0) q = Vector(q.x / w, q.y / w, q.z / w);
  return q;
}

// Six planes (a, b, c, d), a camera point being inside where a x + b y + c z + d >= 0, as planes of the world.
using Planes = Eigen::Matrix<double, 6, 4>;

Planes planesInWorld(const Mat4d& pose, double near_, double far_, double s1, double s2, double s3) {
  Planes planes;
  planes << 0, 0, -1, -near_,  //
      0, 0, 1, far_,           //
      0, -s3, -s2, 0,          //
      0, s3, -s2, 0,           //
      -s3, 0, -s1, 0,          //
      s3, 0, -s1, 0;
  return planes * Eigen::Map<const Eigen::Matrix4d>(&pose[0]).inverse();
}

}  // namespace

Frustum::Frustum(const Mat4d& pose_, double near_, double far_, double fov_, int viewSign_)
    : pose(pose_),
      near(near_),
      far(far_),
      fov(fov_),
      viewSign(viewSign_),
      aspect(1.0),
      tanHalfFovX(std::tan(fov / 2)),
      tanHalfFovY(std::tan((fov / aspect) / 2)),
      axisPoint(pose[12] + pose[8], pose[13] + pose[9], pose[14] + pose[10]) {}

Frustum::Frustum(const Mat4d& pose_, double fov_) : Frustum(pose_, 0.4, 10.0, fov_, -1) {
  aspect = 1.3333333333333333;
  tanHalfFovY = std::tan((fov / aspect) / 2);
}

void Frustum::initSamplePts() {
  constexpr double step = 0.1111111111111111;
  const double width = fov, height = fov / aspect, depth = far - near;
  samplePts.reserve(samplesPerSide * samplesPerSide * samplesPerSide);
  for (int i = 0; i < samplesPerSide; ++i)
    for (int j = 0; j < samplesPerSide; ++j)
      for (int k = 0; k < samplesPerSide; ++k)
        samplePts.emplace_back(i * width * step - width / 2, j * height * step - height / 2, k * depth * step + near);
}

double Frustum::checkPose(Mat4d other) {
  if (samplePts.empty()) initSamplePts();
  return latticeScore(samplePts, multiply(rigidInverse(other), pose), {near, far, tanHalfFovX, tanHalfFovY});
}

bool Frustum::contains(const Frustum& f, const Vec3d<double>& p) {
  if (!(f.far > f.near && f.fov <= pi)) return false;
  const Cone& cone = coneOf(f.pose, f.fov);
  if (!cone.inverse) return false;
  const Vector q = transformed(*cone.inverse, p);
  const double d = f.viewSign * q.z;
  return d > 0.0 && d >= f.near && d <= f.far && liesInCone(cone, q, f.viewSign);
}

bool Frustum::intersect(const Frustum& a, const Frustum& b) {
  if (std::abs(a.fov - b.fov) > epsilon || a.fov > pi) return false;
  const double m = std::min(a.near, b.near), s = std::sin(a.fov / 2) * m;
  return intersect(a.pose, a.near, a.far, b.pose, b.near, b.far, s, s, m / 2);
}

bool Frustum::intersect(const Mat4d& poseA, const Mat4d& poseB, double near_, double far_, double s1, double s2,
                        double s3) {
  return intersect(poseA, near_, far_, poseB, near_, far_, s1, s2, s3);
}

bool Frustum::intersect(const Mat4d& poseA, double nearA, double farA, const Mat4d& poseB, double nearB, double farB,
                        double s1, double s2, double s3) {
  if (nearA > farA || nearB > farB || s1 < epsilon || s2 < epsilon) return false;
  const Planes a = planesInWorld(poseA, nearA, farA, s1, s2, s3), b = planesInWorld(poseB, nearB, farB, s1, s2, s3);
  HalfSpaces halfSpaces;
  for (int i = 0; i < 6; ++i) {
    halfSpaces[i] = {{a(i, 0), a(i, 1), a(i, 2)}, a(i, 3)};
    halfSpaces[6 + i] = {{b(i, 0), b(i, 1), b(i, 2)}, b(i, 3)};
  }
  return haveCommonPoint(halfSpaces);
}

bool Frustum::sameViewDirection(const Mat4d& a, const Mat4d& b, double maxAngle) {
  const auto direction = [](const Mat4d& m) { return Vector(-m[8], -m[9], -m[10]); };
  return maxAngle > std::abs(angleBetween(direction(a), direction(b)));
}

}  // namespace MirelAlgorithms
