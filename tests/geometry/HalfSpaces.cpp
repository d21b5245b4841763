#include <MirelAlgorithms/geometry/internal/HalfSpaces.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

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

TEST(HalfSpaces, degenerate) {
  const struct {
    const char* name;
    std::vector<HalfSpace> added;
    bool common;
  } cases[] = {
      {"a box", {}, true},
      {"touches a face", {{{1, 0, 0}, -1}}, true},
      {"beyond a face", {{{1, 0, 0}, -1 - 1e-9}}, false},
      {"touches a corner", {{{1, 1, 1}, -3}}, true},
      {"beyond a corner", {{{1, 1, 1}, -3 - 1e-9}}, false},
      {"only a plane is left", {{{1, 2, 3}, 0}, {{-1, -2, -3}, 0}}, true},
      {"only a point is left",
       {{{1, 0, 0}, 0}, {{-1, 0, 0}, 0}, {{0, 1, 1}, 0}, {{0, -1, -1}, 0}, {{0, 1, -1}, 0}, {{0, -1, 1}, 0}},
       true},
      {"nearly parallel", {{{1, 0, 0}, 0}, {{-1, 1e-15, 0}, 0}, {{-1, -1e-15, 0}, 0}}, true},
      {"an acute wedge", {{{1, 0, 0}, -0.5}, {{-1, 1e-5, 0}, 0.499999}}, true},
      {"nearly parallel and apart", {{{1, 0, 0}, -0.5}, {{-1, 1e-15, 0}, 0}, {{-1, -1e-15, 0}, 0}}, false},
      {"apart by less than rounding of what is far", {{{1, 0, 0}, 1e9}, {{1, 0, 0}, 0}, {{-1, 0, 0}, -1e-6}}, true},
      {"the same face often", {{{1, 0, 0}, 1}, {{2, 0, 0}, 2}, {{1e9, 0, 0}, 1e9}, {{1e-9, 0, 0}, 1e-9}}, true},
      {"nothing", {{{0, 0, 0}, -1}}, false},
      {"no number as normal", {{{nan, 0, 0}, 1}}, false},
      {"no number as distance", {{{1, 0, 0}, nan}}, false},
      {"no numbers without direction", {{{0, 0, 0}, nan}}, false},
      {"infinite", {{{infinity, 0, 0}, 1}}, false},
      {"infinitely far", {{{1, 0, 0}, infinity}}, false},
      {"very short normals", {{{1e-300, 0, 0}, -0.5e-300}, {{-1e-300, 0, 0}, 0.7e-300}}, true},
      {"very short normal beyond a face", {{{1e-300, 0, 0}, -2e-300}}, false},
      {"very long normals", {{{1e300, 0, 0}, -0.5e300}, {{-1e300, 0, 0}, 0.4e300}}, false},
  };
  for (const auto& [name, added, common] : cases) {
    HalfSpaces halfSpaces = box();
    std::copy(added.begin(), added.end(), halfSpaces.begin() + 6);
    EXPECT_EQ(haveCommonPoint(halfSpaces), common) << name;
  }
}

}  // namespace
