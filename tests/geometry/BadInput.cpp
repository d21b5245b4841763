#include <MirelAlgorithms/geometry/Frustum.h>
#include <MirelAlgorithms/geometry/UnionFind.h>
#include <MirelAlgorithms/geometry/VisibilityCheck.h>
#include <support/BadInput.h>

#include <climits>
#include <cmath>

#include "RandomScan.h"

namespace MirelAlgorithms {
namespace {

constexpr double pi = 3.141592653589793, nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

using Point = Vec3d<double>;

/// A pose with one element changed, or all of them.
Mat4d poseWith(int element, double value) {
  Mat4d pose;
  for (int i = 0; i < 16; ++i)
    if (element < 0 || i == element) pose[i] = value;
  return pose;
}

const std::pair<std::string, Mat4d> badPoses[] = {{"pose of zeros", poseWith(-1, 0)},
                                                  {"an axis that is no number", poseWith(10, nan)},
                                                  {"infinite pose", poseWith(-1, infinity)},
                                                  {"position that is no number", poseWith(14, nan)}};

const std::pair<std::string, Frustum> badViews[] = {{"near beyond far", {Mat4d(), 4, 1, 1, -1}},
                                                    {"near not a number", {Mat4d(), nan, 4, 1, -1}},
                                                    {"far not a number", {Mat4d(), 1, nan, 1, -1}},
                                                    {"no width", {Mat4d(), 1, 4, 0, -1}},
                                                    {"width above pi", {Mat4d(), 1, 4, std::nextafter(pi, 4.0), -1}},
                                                    {"width not a number", {Mat4d(), 1, 4, nan, -1}}};

TEST(BadInput, Frustum) {
  const Frustum good(Mat4d(), 1, 4, 1, -1);
  const Point inside(0.1, 0, -2);
  ASSERT_TRUE(Frustum::contains(good, inside) && Frustum::intersect(good, good));
  BadInput pairs("Frustum");
  for (const auto& bad : badPoses) {
    const Frustum view(bad.second, 1, 4, 1, -1);
    pairs.expect(bad.first + ", contains", "false", [&] { return Frustum::contains(view, inside); });
    pairs.expect(bad.first + ", intersect", "false", [&] { return Frustum::intersect(view, good); });
    pairs.expect(bad.first + ", intersect from the other", "false", [&] { return Frustum::intersect(good, view); });
    pairs.expect(bad.first + ", intersect by poses", "false",
                 [&] { return Frustum::intersect(Mat4d(), bad.second, 1, 4, 0.5, 0.5, 0.5); });
    pairs.expect(bad.first + ", checkPose of it", "true",
                 [&] { return std::isfinite(Frustum(good).checkPose(bad.second)); });
    pairs.expect(bad.first + ", checkPose from it", "true",
                 [&] { return std::isfinite(Frustum(view).checkPose(Mat4d())); });
  }
  for (const auto& bad : badViews) {
    pairs.expect(bad.first + ", contains", "false", [&] { return Frustum::contains(bad.second, inside); });
    pairs.expect(bad.first + ", intersect", "false", [&] { return Frustum::intersect(bad.second, bad.second); });
    pairs.expect(bad.first + ", checkPose", "true",
                 [&] { return std::isfinite(Frustum(bad.second).checkPose(Mat4d())); });
  }
  pairs.expect("far without end, intersect", "false", [] {
    const Frustum view(Mat4d(), 1, infinity, 1, -1);
    return Frustum::intersect(view, view);
  });
  pairs.expect("far as near, contains", "false",
               [] { return Frustum::contains(Frustum(Mat4d(), 2, 2, 1, -1), Point(0, 0, -2)); });
  pairs.expect("no sign, contains", "false", [&] { return Frustum::contains(Frustum(Mat4d(), 1, 4, 1, 0), inside); });
  for (const Point& point : {Point(nan, 0, -2), Point(0, 0, nan), Point(infinity, 0, -2), Point(0, 0, -infinity)})
    pairs.expect("point " + std::to_string(point.x) + ", 0, " + std::to_string(point.z), "false",
                 [&] { return Frustum::contains(good, point); });
  for (const double slope : {0.0, -1.0, nan}) {
    pairs.expect("s1 " + std::to_string(slope), "false",
                 [&] { return Frustum::intersect(Mat4d(), Mat4d(), 1, 4, slope, 0.5, 0.5); });
    pairs.expect("s2 " + std::to_string(slope), "false",
                 [&] { return Frustum::intersect(Mat4d(), Mat4d(), 1, 4, 0.5, slope, 0.5); });
  }
  pairs.expect("s3 not a number", "false", [] { return Frustum::intersect(Mat4d(), Mat4d(), 1, 4, 0.5, 0.5, nan); });
  for (const double element : {0.0, nan})
    pairs.expect("directions of " + std::to_string(element) + " count as equal", "true",
                 [&] { return Frustum::sameViewDirection(poseWith(-1, element), Mat4d(), 1e-300); });
  for (const double angle : {0.0, nan})
    pairs.expect("largest angle " + std::to_string(angle), "false",
                 [&] { return Frustum::sameViewDirection(Mat4d(), Mat4d(), angle); });
}

TEST(BadInput, UnionFind) {
  BadInput pairs("UnionFind");
  for (const int n : {0, INT_MIN})
    pairs.expect(std::to_string(n) + " elements", "0, 0", [&] {
      UnionFind sets(n);
      return std::to_string(sets.getNumPartitions()) + ", " + std::to_string(sets.getPartitions().size());
    });
  struct Function {
    std::string name;
    char argument;
    void (*call)(UnionFind&, int);
  };
  const Function functions[] = {
      {"findPartition", 'e', [](UnionFind& s, int e) { s.findPartition(e); }},
      {"findPartitionIndex", 'e', [](UnionFind& s, int e) { s.findPartitionIndex(e); }},
      {"getCardinality", 'e', [](UnionFind& s, int e) { s.getCardinality(e); }},
      {"getCardinalityIndex", 'k', [](UnionFind& s, int k) { s.getCardinalityIndex(k); }},
      {"getPartitionRepresentative", 'k', [](UnionFind& s, int k) { s.getPartitionRepresentative(k); }},
      {"unionPartitions", 'a', [](UnionFind& s, int a) { s.unionPartitions(a, 0); }},
      {"unionPartitions", 'b', [](UnionFind& s, int b) { s.unionPartitions(0, b); }}};
  UnionFind sets(4);
  sets.unionPartitions(0, 1);
  const auto partitions = [&] { return sets.getPartitions(); };
  pairs.keep(partitions);
  for (const Function& function : functions) {
    const int most = function.argument == 'k' ? 2 : 3;
    for (const int bad : {-1, most + 1, INT_MIN}) {
      const std::string defect = function.name + ": " + function.argument + ": " + std::to_string(bad);
      pairs.expect(defect, refused + defect + " given, 0 to " + std::to_string(most) + " expected",
                   [&] { function.call(sets, bad); });
    }
  }
  UnionFind& itself = sets;
  pairs.expect("assigned to itself", "done", [&] { static_cast<void>(sets = itself); });
}

using Algorithms::VisibilityCheck;

TEST(BadInput, VisibilityCheck) {
  VisibilityCheck check(0.25);
  const auto update = [](VisibilityCheck& which, const Scan& scan) {
    which.updateGrid(scan.points, scan.poses, scan.sensors);
  };
  update(check, randomScan(53, 4000));
  ASSERT_FALSE(check.getGrid().cells().empty());
  const auto grid = [&] {
    Bytes bytes;
    for (const auto& [key, e] : check.getGrid().cells()) {
      for (const int number : {key.x, key.y, key.z, e.firstPose, e.lastPose, e.score}) bytes.add(number);
      bytes.add(e.points);
      bytes.add(e.rays);
    }
    return bytes.text();
  };
  const auto maximum = [&] { return std::get<0>(VisibilityCheck(check).getCurrentMax()).size(); };
  BadInput pairs("VisibilityCheck::updateGrid");
  pairs.keep(grid, maximum);
  const std::string notFinite = ": a number that is not finite given, finite numbers expected";
  const std::string points = refused + "updateGrid: points in the world" + notFinite;
  const std::string sensors = refused + "updateGrid: sensorPoints in the world" + notFinite;
  const std::string few = " given, none, or at least 3 expected";
  const std::string far =
      refused +
      "updateGrid: points: one at 2^31 voxels or more from the origin given, nearer points or larger voxels expected";
  struct Row {
    const char* defect;
    std::string outcome;
    void (*change)(Scan&);
  };
  const std::string missing = "out_of_range: invalid map<K, T> key";
  for (const Row& row : {
           Row{"a pose that is not there", missing, [](Scan& s) { s.poses.erase(s.points.back().second); }},
           Row{"a number of no pose", missing, [](Scan& s) { s.points[3].second = INT_MIN; }},
           Row{"one sensor point", refused + "updateGrid: sensorPoints: 1" + few,
               [](Scan& s) { s.sensors.resize(1, Eigen::Vector3d::Zero()); }},
           Row{"two sensor points", refused + "updateGrid: sensorPoints: 2" + few,
               [](Scan& s) { s.sensors.resize(2); }},
           Row{"point not a number", points, [](Scan& s) { s.points.back().first.y() = nan; }},
           Row{"pose infinite", points, [](Scan& s) { s.poses[0].data()[0] = infinity; }},
           Row{"sensor not a number", sensors, [](Scan& s) { s.sensors[2].x() = nan; }},
           Row{"point far away", far, [](Scan& s) { s.points.back().first.x() = 1e12; }},
           Row{"point that overflows in the world", points, [](Scan& s) { s.points[1].first.setConstant(1.7e308); }},
       }) {
    Scan scan = randomScan(54, 500);
    row.change(scan);
    pairs.expect(row.defect, row.outcome, [&] { update(check, scan); });
  }
  VisibilityCheck infinite(infinity);
  pairs.expect("infinite voxels", refused + "updateGrid: voxel size: infinity given, a finite number expected",
               [&] { update(infinite, randomScan(53, 500)); });
  for (const double size : {-infinity, nan, 2.5e-9, 1e300})
    pairs.expect("voxel size " + std::to_string(size), size > 0 ? "ends" : "0.25", [&] {
      VisibilityCheck odd(size);
      Scan scan = randomScan(55, 2000);
      scan.sensors[1] = {1e15, -1e15, 1e300};
      scan.poses[1000] = Eigen::Matrix4d::Constant(nan);  // of no point
      update(odd, scan);
      std::size_t maxima = 0;
      while (std::get<4>(odd.getCurrentMax()) > 0) ++maxima;
      const bool sound = maxima <= odd.getGrid().cells().size();
      return !sound ? "too many maxima" : odd.getGrid().cellSize() == 0.25 ? "0.25" : "ends";
    });
  const Scan seen = randomScan(56, 2000);
  const std::pair<const char*, Scan> nothing[] = {{"no points", {}},
                                                  {"no points, two sensors", {{}, {}, {{0, 0, 0}, {1, 0, 0}}}},
                                                  {"no sensors: no sight lines", {seen.points, seen.poses, {}}}};
  for (const auto& scan : nothing)
    pairs.expect(scan.first, "true", [&] {
      VisibilityCheck fresh(0.25);
      update(fresh, scan.second);
      return fresh.getGrid().cells().empty() && fresh.getCurrentMax() == decltype(fresh.getCurrentMax())();
    });
}

}  // namespace
}  // namespace MirelAlgorithms
