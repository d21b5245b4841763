// What callers find in the public records that they make themselves.
#include <MirelAlgorithms/MirelAlgorithms.h>
#include <gtest/gtest.h>

#include <algorithm>

using namespace MirelAlgorithms;

namespace {

bool isZero(const vec3f& v) { return v.x == 0 && v.y == 0 && v.z == 0; }

TEST(RecordDefaults, ofMeshes) {
  const Triangle triangle;
  const auto isNothing = [](auto value) { return value == 0; };
  EXPECT_TRUE(std::ranges::all_of(triangle.v, isNothing) && std::ranges::all_of(triangle.err, isNothing));
  EXPECT_TRUE(std::ranges::all_of(triangle.uvs, isZero) && isZero(triangle.n));
  EXPECT_TRUE(triangle.deleted == 0 && triangle.dirty == 0 && triangle.attr == 0);
  EXPECT_EQ(triangle.material, -1);
  EXPECT_EQ(Triangle::hasTexture, 4);
  const Vertex vertex;
  EXPECT_TRUE(isZero(vertex.p) && vertex.tstart == 0 && vertex.tcount == 0 && vertex.border == 0);
  EXPECT_TRUE(std::ranges::all_of(vertex.q.m, isNothing));
  EXPECT_TRUE(Ref().tid == 0 && Ref().tvertex == 0);
}

TEST(RecordDefaults, ofMatchesAndVoxels) {
  const MultiMatch match;
  EXPECT_TRUE(match.point == cv::Vec2f() && match.descriptor.empty());
  EXPECT_TRUE(match.multiplicity == 1 && match.maxDistance == 0.0);
  const Algorithms::VisibilityCheck::GridElement element;
  EXPECT_TRUE(element.firstPose == 0 && element.lastPose == 0 && element.score == 0);
}

}  // namespace
