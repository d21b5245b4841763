/// What a camera sees: overlap of views, points in view.
///
///     const Frustum a(poseA, 1.0), b(poseB, 1.0);  // 1 rad wide, from 0.4 to 10
///     if (Frustum::intersect(a, b)) pairs.push_back({a, b});
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/Host.h>

#include <vector>

#pragma push_macro("near")
#pragma push_macro("far")
#undef near
#undef far

namespace MirelAlgorithms {

/// The view of a camera: a pose, a range of distances and a field of view.
///
/// Poses map camera to world. Elements (0, 1, 2), (4, 5, 6), (8, 9, 10) are the camera's x, y and z axes in the world,
/// (12, 13, 14) is its position. Lengths are in the unit of the poses, angles in radians.
///
/// Nothing is refused: a pose that is singular or not finite, and a range or field of view that makes no sense, give
/// "outside", "no overlap" or a score of 0, as each function says. Const functions on any number of threads; the first
/// `checkPose` fills `samplePts`.
struct MIREL_API Frustum {
  Mat4d pose;                            ///< camera to world
  double near;                           ///< nearest visible distance
  double far;                            ///< farthest visible distance
  double fov;                            ///< full horizontal angle of view
  int viewSign;                          ///< which way the static `contains` looks: -1 along -z, 1 along +z
  double aspect;                         ///< width over height: the vertical angle is fov / aspect
  std::vector<Vec3d<double>> samplePts;  ///< points that `checkPose` tries, in camera coordinates; filled by it
  double tanHalfFovX;                    ///< tan(fov / 2)
  double tanHalfFovY;                    ///< tan(fov / aspect / 2)
  Vec3d<double> axisPoint;               ///< one unit from the position along +z, in the world

  /// Visible from 0.4 to 10, aspect 4 / 3, looking along -z.
  Frustum(const Mat4d& pose, double fov);

  /// Aspect 1.
  Frustum(const Mat4d& pose, double near, double far, double fov, int viewSign);

  /// How much of this view a camera at another pose sees: the sum of 1 / distance from that camera over the points of
  /// a 10 x 10 x 10 lattice that lie in its range and strictly inside its sides, looking along +z with this frustum's
  /// range and angles. Near points weigh more; nothing is normalised. The lattice is a box that is as wide and high as
  /// the angles at every distance. The inverse of `pose` is taken to be rigid. Points and sides that are not finite add
  /// nothing.
  double checkPose(Mat4d pose);

  /// Whether a point of the world lies in the view, taken as a cone about viewSign * z: at a distance along the axis
  /// from near to far and at most fov / 2 away from it. False for far <= near, fov > pi and a pose without an inverse.
  static bool contains(const Frustum& f, const Vec3d<double>& p);

  /// Whether two views, looking along -z, share a point; `viewSign` has no influence. False for unequal fields of view
  /// and for more than pi. The sides rise by 2 sin(fov / 2) per unit in x and in y.
  static bool intersect(const Frustum& a, const Frustum& b);

  /// The same for two poses with the same range, see below.
  static bool intersect(const Mat4d& poseA, const Mat4d& poseB, double near, double far, double s1, double s2,
                        double s3);

  /// The same for pyramids whose sides are s3 |x| <= -s1 z and s3 |y| <= -s2 z in camera coordinates.
  ///
  /// The twelve planes are the constraints of a quadratic program, which is solved by a dual active-set method
  /// (Goldfarb and Idnani, Mathematical Programming 27 (1983) 1); the views overlap when it has a solution. Views that
  /// only touch overlap, to about 1e-12 of the coordinates. False for near > far, for s1 or s2 below 2.2e-16, and for
  /// planes that are not finite.
  static bool intersect(const Mat4d& poseA, double nearA, double farA, const Mat4d& poseB, double nearB, double farB,
                        double s1, double s2, double s3);

  /// Whether the directions of view, -z, of two poses are less than an angle apart. Axes not longer than 1e-5 count as
  /// equal.
  static bool sameViewDirection(const Mat4d& a, const Mat4d& b, double maxAngle);

 private:
  void initSamplePts();
};

}  // namespace MirelAlgorithms

#pragma pop_macro("far")
#pragma pop_macro("near")
