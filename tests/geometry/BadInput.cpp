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

struct BadPose {
  const char* defect;
  Mat4d pose;
};
const BadPose badPoses[] = {{"pose of zeros", poseWith(-1, 0)},
                            {"pose without an axis", poseWith(10, 0)},
                            {"pose of no numbers", poseWith(-1, nan)},
                            {"an axis that is no number", poseWith(10, nan)},
                            {"infinite pose", poseWith(-1, infinity)},
                            {"infinite position", poseWith(12, infinity)},
                            {"position that is no number", poseWith(14, nan)}};

struct BadView {
  const char* defect;
  Frustum view;
};
const BadView badViews[] = {{"near beyond far", {Mat4d(), 4, 1, 1, -1}},
                            {"near not a number", {Mat4d(), nan, 4, 1, -1}},
                            {"far not a number", {Mat4d(), 1, nan, 1, -1}},
                            {"no width", {Mat4d(), 1, 4, 0, -1}},
                            {"negative width", {Mat4d(), 1, 4, -1, -1}},
                            {"width above pi", {Mat4d(), 1, 4, std::nextafter(pi, 4.0), -1}},
                            {"width without end", {Mat4d(), 1, 4, infinity, -1}},
                            {"width not a number", {Mat4d(), 1, 4, nan, -1}}};

TEST(BadInput, Frustum) {
  const Frustum good(Mat4d(), 1, 4, 1, -1);
  const Point inside(0.1, 0, -2);
  ASSERT_TRUE(Frustum::contains(good, inside) && Frustum::intersect(good, good));
  BadInput pairs("Frustum");
  for (const BadPose& bad : badPoses) {
    const std::string name = bad.defect;
    const Frustum view(bad.pose, 1, 4, 1, -1);
    pairs.expect(name + ", contains", "false", [&] { return Frustum::contains(view, inside); });
    pairs.expect(name + ", intersect", "false", [&] { return Frustum::intersect(view, good); });
    pairs.expect(name + ", intersect from the other", "false", [&] { return Frustum::intersect(good, view); });
    pairs.expect(name + ", intersect by poses", "false",
                 [&] { return Frustum::intersect(Mat4d(), bad.pose, 1, 4, 0.5, 0.5, 0.5); });
    pairs.expect(name + ", checkPose of it", "true", [&] { return std::isfinite(Frustum(good).checkPose(bad.pose)); });
    pairs.expect(name + ", checkPose from it", "true", [&] { return std::isfinite(Frustum(view).checkPose(Mat4d())); });
  }
  for (const BadView& bad : badViews) {
    const std::string name = bad.defect;
    pairs.expect(name + ", contains", "false", [&] { return Frustum::contains(bad.view, inside); });
    pairs.expect(name + ", intersect", "false", [&] { return Frustum::intersect(bad.view, bad.view); });
    pairs.expect(name + ", checkPose", "true", [&] { return std::isfinite(Frustum(bad.view).checkPose(Mat4d())); });
  }
  pairs.expect("near 0: sides without slope, intersect", "false", [] {
    const Frustum view(Mat4d(), 0, 1, 1, -1);
    return Frustum::intersect(view, view);
  });
  pairs.expect("far without end, intersect", "false", [] {
    const Frustum view(Mat4d(), 1, infinity, 1, -1);
    return Frustum::intersect(view, view);
  });
  pairs.expect("far as near, contains", "false",
               [] { return Frustum::contains(Frustum(Mat4d(), 2, 2, 1, -1), Point(0, 0, -2)); });
  pairs.expect("no sign, contains", "false", [&] { return Frustum::contains(Frustum(Mat4d(), 1, 4, 1, 0), inside); });
  for (const auto& [name, point] : {std::pair("x not a number", Point(nan, 0, -2)),
                                    {"z not a number", Point(0, 0, nan)},
                                    {"x infinite", Point(infinity, 0, -2)},
                                    {"z infinite", Point(0, 0, -infinity)}})
    pairs.expect(std::string("point, ") + name, "false", [&, point = point] { return Frustum::contains(good, point); });
  for (const auto& [name, slope] : {std::pair("0", 0.0), {"-1", -1.0}, {"not a number", nan}}) {
    pairs.expect(std::string("s1 ") + name, "false",
                 [&, s = slope] { return Frustum::intersect(Mat4d(), Mat4d(), 1, 4, s, 0.5, 0.5); });
    pairs.expect(std::string("s2 ") + name, "false",
                 [&, s = slope] { return Frustum::intersect(Mat4d(), Mat4d(), 1, 4, 0.5, s, 0.5); });
  }
  pairs.expect("s3 not a number", "false", [] { return Frustum::intersect(Mat4d(), Mat4d(), 1, 4, 0.5, 0.5, nan); });
  pairs.expect("directions without length count as equal", "true",
               [] { return Frustum::sameViewDirection(poseWith(-1, 0), Mat4d(), 1e-300); });
  pairs.expect("directions that are no numbers count as equal", "true",
               [] { return Frustum::sameViewDirection(poseWith(-1, nan), Mat4d(), 1e-300); });
  pairs.expect("largest angle 0", "false", [] { return Frustum::sameViewDirection(Mat4d(), Mat4d(), 0); });
  pairs.expect("largest angle below 0", "false", [] { return Frustum::sameViewDirection(Mat4d(), Mat4d(), -1); });
  pairs.expect("largest angle not a number", "false", [] { return Frustum::sameViewDirection(Mat4d(), Mat4d(), nan); });
}

TEST(BadInput, UnionFind) {
  BadInput pairs("UnionFind");
  for (const int n : {0, -1, INT_MIN})
    pairs.expect(std::to_string(n) + " elements", "0, 0", [&] {
      UnionFind sets(n);
      return std::to_string(sets.getNumPartitions()) + ", " + std::to_string(sets.getPartitions().size());
    });
  struct Function {
    const char* name;
    const char* argument;
    void (*call)(UnionFind&, int);
  };
  const Function functions[] = {
      {"findPartition", "e", [](UnionFind& s, int e) { s.findPartition(e); }},
      {"findPartitionIndex", "e", [](UnionFind& s, int e) { s.findPartitionIndex(e); }},
      {"getCardinality", "e", [](UnionFind& s, int e) { s.getCardinality(e); }},
      {"getCardinalityIndex", "k", [](UnionFind& s, int k) { s.getCardinalityIndex(k); }},
      {"getPartitionRepresentative", "k", [](UnionFind& s, int k) { s.getPartitionRepresentative(k); }},
      {"unionPartitions", "a", [](UnionFind& s, int a) { s.unionPartitions(a, 0); }},
      {"unionPartitions", "b", [](UnionFind& s, int b) { s.unionPartitions(0, b); }}};
  UnionFind sets(4), none(0);
  sets.unionPartitions(0, 1);
  const auto partitions = [&] { return sets.getPartitions(); };
  pairs.keep(partitions);
  for (const auto& [name, argument, call] : functions) {
    const int most = *argument == 'k' ? 2 : 3;
    for (const int bad : {-1, most + 1, INT_MAX, INT_MIN})
      pairs.expect(std::string(name) + " " + argument + " = " + std::to_string(bad),
                   refused + name + ": " + argument + ": " + std::to_string(bad) + " given, 0 to " +
                       std::to_string(most) + " expected",
                   [&, call = call] { call(sets, bad); });
    if (*argument != 'b')
      pairs.expect(std::string(name) + " " + argument + " of no elements",
                   refused + name + ": " + argument + ": 0 given, 0 to -1 expected",
                   [&, call = call] { call(none, 0); });
  }
  pairs.expect("assigned to itself", "done", [&] {
    UnionFind& itself = sets;
    sets = itself;
  });
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
    for (const auto& [key, element] : check.getGrid().cells()) {
      for (const int number : {key.x, key.y, key.z, element.firstPose, element.lastPose, element.score})
        bytes.add(number);
      bytes.add(element.points);
      bytes.add(element.rays);
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
           Row{"no poses", missing, [](Scan& s) { s.poses.clear(); }},
           Row{"a number of no pose", missing, [](Scan& s) { s.points[3].second = INT_MIN; }},
           Row{"one sensor point", refused + "updateGrid: sensorPoints: 1" + few,
               [](Scan& s) { s.sensors.resize(1, Eigen::Vector3d::Zero()); }},
           Row{"two sensor points", refused + "updateGrid: sensorPoints: 2" + few,
               [](Scan& s) { s.sensors.resize(2); }},
           Row{"point not a number", points, [](Scan& s) { s.points.back().first.y() = nan; }},
           Row{"point infinite", points, [](Scan& s) { s.points[0].first.z() = -infinity; }},
           Row{"pose not a number", points, [](Scan& s) { s.poses[0].data()[7] = nan; }},
           Row{"pose infinite", points, [](Scan& s) { s.poses[0].data()[0] = infinity; }},
           Row{"sensor not a number", sensors, [](Scan& s) { s.sensors[2].x() = nan; }},
           Row{"sensor infinite", sensors, [](Scan& s) { s.sensors[0].y() = infinity; }},
           Row{"point far away", far, [](Scan& s) { s.points.back().first.x() = 1e12; }},
           Row{"points that overflow in the world", points,
               [](Scan& s) {
                 s.points[1].first = {1e308, 1e308, 1e308};
                 s.poses[s.points[1].second].setConstant(2);
               }},
       }) {
    Scan scan = randomScan(54, 500);
    row.change(scan);
    pairs.expect(row.defect, row.outcome, [&] { update(check, scan); });
  }
  VisibilityCheck infinite(infinity);
  pairs.expect("infinite voxels", refused + "updateGrid: voxel size: infinity given, a finite number expected",
               [&] { update(infinite, randomScan(53, 500)); });
  for (const auto& [name, size] : {std::pair("0", 0.0),
                                   {"-1", -1.0},
                                   {"-inf", -infinity},
                                   {"not a number", nan},
                                   {"tiny", 2.5e-9},
                                   {"huge", 1e300}})
    pairs.expect(std::string("voxel size ") + name, size > 0 ? "ends" : "0.25", [&, size = size] {
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
  const auto nothing = [](VisibilityCheck& which) {
    const auto [seen, by, first, last, score] = which.getCurrentMax();
    return seen.empty() && by.empty() && first == 0 && last == 0 && score == 0;
  };
  pairs.expect("maximum of a new grid", "true", [&] {
    VisibilityCheck fresh(0.25);
    return nothing(fresh);
  });
  pairs.expect("no points", "true", [&] {
    VisibilityCheck fresh(0.25);
    fresh.updateGrid({}, {}, {});
    return nothing(fresh);
  });
  pairs.expect("no points, two sensors", "true", [&] {
    VisibilityCheck fresh(0.25);
    fresh.updateGrid({}, {}, {{0, 0, 0}, {1, 0, 0}});
    return nothing(fresh);
  });
  pairs.expect("no sensors: no sight lines", "true", [&] {
    VisibilityCheck fresh(0.25);
    Scan scan = randomScan(56, 2000);
    scan.sensors.clear();
    update(fresh, scan);
    return fresh.getGrid().cells().empty() && nothing(fresh);
  });
}

}  // namespace
}  // namespace MirelAlgorithms
