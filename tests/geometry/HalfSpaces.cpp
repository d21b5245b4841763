#include <MirelAlgorithms/geometry/internal/HalfSpaces.h>
#include <gtest/gtest.h>

#include <Eigen/LU>
#include <cmath>
#include <limits>

#include "RandomPose.h"

using MirelAlgorithms::HalfSpace;
using MirelAlgorithms::HalfSpaces;
using MirelAlgorithms::haveCommonPoint;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// The box from -1 to 1, and six times all of space.
HalfSpaces box() {
  HalfSpaces halfSpaces;
  halfSpaces.fill({{0, 0, 0}, 1});
  for (std::size_t i = 0; i < 6; ++i) halfSpaces[i] = {{}, 1.0};
  for (std::size_t i = 0; i < 6; ++i) halfSpaces[i].normal[i / 2] = i % 2 ? 1.0 : -1.0;
  return halfSpaces;
}

// How deep a point can lie in all of them, by trying every set of four that could decide it; they bound a box.
double depth(const HalfSpaces& halfSpaces) {
  Eigen::Matrix<double, 12, 4> rows;
  Eigen::Matrix<double, 12, 1> distances;
  for (int i = 0; i < 12; ++i) {
    const HalfSpace& h = halfSpaces[static_cast<std::size_t>(i)];
    const Eigen::Vector3d normal(h.normal[0], h.normal[1], h.normal[2]);
    const double length = normal.norm() > 0.0 ? normal.norm() : 1.0;
    rows.row(i) << normal.transpose() / length, -1.0;
    distances[i] = h.distance / length;
  }
  double best = -infinity;
  for (int a = 0; a < 12; ++a)
    for (int b = a + 1; b < 12; ++b)
      for (int c = b + 1; c < 12; ++c)
        for (int d = c + 1; d < 12; ++d) {
          Eigen::Matrix4d m;
          m << rows.row(a), rows.row(b), rows.row(c), rows.row(d);
          if (std::abs(m.determinant()) < 1e-12) continue;
          const Eigen::Vector4d x =
              -(m.inverse() * Eigen::Vector4d(distances[a], distances[b], distances[c], distances[d]));
          best = std::max(best, (rows.leftCols<3>() * x.head<3>() + distances).minCoeff());
        }
  return best;
}

// What makes systems hard, by kind: nothing, wide, thin slabs that touch or miss, repeated planes, lengths of normals
// from 1e-40 to 1e40.
HalfSpaces randomSystem(RandomPoses& random, int kind) {
  HalfSpaces halfSpaces = box();
  for (HalfSpace& h : halfSpaces) h.distance *= random.uniform(0.3, 3.0);
  for (std::size_t i = 6; i < 12; ++i)
    halfSpaces[i] = {{random.normal(), random.normal(), random.normal()}, random.uniform(kind == 1 ? 0.5 : -1.0, 2.0)};
  if (kind == 2) {
    const auto& [normal, distance] = halfSpaces[6];
    halfSpaces[7] = {{-normal[0], -normal[1], -normal[2]}, -distance + random.uniform(-1e-6, 1e-6)};
  }
  if (kind == 3) halfSpaces[8] = halfSpaces[9] = halfSpaces[6];
  if (kind == 4)
    for (HalfSpace& h : halfSpaces) {
      const double scale = std::pow(10.0, random.uniform(-40, 40));
      for (double& component : h.normal) component *= scale;
      h.distance *= scale;
    }
  return halfSpaces;
}

TEST(HalfSpaces, agreesWithAllSetsOfFour) {
  RandomPoses random(11);
  int common[2] = {};
  for (int round = 0; round < 500; ++round) {
    const HalfSpaces halfSpaces = randomSystem(random, round % 5);
    const double deepest = depth(halfSpaces);
    if (std::abs(deepest) < 1e-10) continue;
    EXPECT_EQ(haveCommonPoint(halfSpaces), deepest > 0.0) << "round " << round << ", depth " << deepest;
    ++common[deepest > 0.0];
  }
  EXPECT_GT(common[0], 50);
  EXPECT_GT(common[1], 50);
}

TEST(HalfSpaces, degenerate) {
  const struct {
    const char* name;
    std::vector<HalfSpace> added;
    bool common;
  } cases[] = {
      {"a box", {}, true},
      {"touches a face", {{{1, 0, 0}, -1}}, true},
      {"beyond a face", {{{1, 0, 0}, -1 - 1e-9}}, false},
      {"touches an edge", {{{1, 1, 0}, -2}}, true},
      {"touches a corner", {{{1, 1, 1}, -3}}, true},
      {"beyond a corner", {{{1, 1, 1}, -3 - 1e-9}}, false},
      {"only a plane is left", {{{1, 2, 3}, 0}, {{-1, -2, -3}, 0}}, true},
      {"only a point is left",
       {{{1, 0, 0}, 0}, {{-1, 0, 0}, 0}, {{0, 1, 1}, 0}, {{0, -1, -1}, 0}, {{0, 1, -1}, 0}, {{0, -1, 1}, 0}},
       true},
      {"parallel and apart", {{{1, 2, 3}, -0.1}, {{-1, -2, -3}, 0}}, false},
      {"nearly parallel", {{{1, 0, 0}, 0}, {{-1, 1e-15, 0}, 0}, {{-1, -1e-15, 0}, 0}}, true},
      {"nearly parallel and apart", {{{1, 0, 0}, -0.5}, {{-1, 1e-15, 0}, 0}, {{-1, -1e-15, 0}, 0}}, false},
      {"the same face often", {{{1, 0, 0}, 1}, {{2, 0, 0}, 2}, {{1e9, 0, 0}, 1e9}, {{1e-9, 0, 0}, 1e-9}}, true},
      {"nothing", {{{0, 0, 0}, -1}}, false},
      {"no number as normal", {{{nan, 0, 0}, 1}}, false},
      {"no number as distance", {{{1, 0, 0}, nan}}, false},
      {"no numbers without direction", {{{0, 0, 0}, nan}}, false},
      {"infinite", {{{infinity, 0, 0}, 1}}, false},
      {"infinitely far", {{{1, 0, 0}, infinity}}, false},
      {"very short normals", {{{1e-300, 0, 0}, -0.5e-300}, {{-1e-300, 0, 0}, 0.7e-300}}, true},
      {"very long normals", {{{1e300, 0, 0}, -0.5e300}, {{-1e300, 0, 0}, 0.4e300}}, false},
  };
  for (const auto& [name, added, common] : cases) {
    HalfSpaces halfSpaces = box();
    std::copy(added.begin(), added.end(), halfSpaces.begin() + 6);
    EXPECT_EQ(haveCommonPoint(halfSpaces), common) << name;
  }
}

// Random bits, so that every kind of number is there: the answer is open, that it comes is not.
TEST(HalfSpaces, alwaysEnds) {
  RandomPoses random(12);
  int common = 0;
  for (int round = 0; round < 20000; ++round) {
    HalfSpaces halfSpaces;
    for (HalfSpace& h : halfSpaces) {
      const int range = round % 3 == 0 ? 300 : round % 3 == 1 ? 12 : 1;
      const auto number = [&] { return random.normal() * std::pow(10.0, random.below(2 * range) - range); };
      h = {{number(), number(), number()}, number()};
      if (random.below(20) == 0) h.normal[0] = 0.0;
    }
    common += haveCommonPoint(halfSpaces);
  }
  EXPECT_GT(common, 0);
}

}  // namespace
