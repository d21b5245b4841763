// What callers find in the public records that they make themselves.
#include <MirelAlgorithms/MirelAlgorithms.h>
#include <gtest/gtest.h>
#include <mesh/MeshBits.h>

using namespace MirelAlgorithms;

namespace {

TEST(RecordDefaults, ofMeshes) {
  MeshSimplification mesh;
  mesh.triangles.resize(1);
  mesh.vertices.resize(1);
  mesh.refs.resize(1);
  std::vector<std::uint64_t> zeros(41);
  zeros[9] = std::bit_cast<std::uint64_t>(-1.0);  // the material
  EXPECT_EQ(bits(mesh), zeros);
  EXPECT_EQ(Triangle::hasTexture, 4);
}

TEST(RecordDefaults, ofMatchesAndVoxels) {
  const MultiMatch match;
  EXPECT_TRUE(match.point == cv::Vec2f() && match.descriptor.empty());
  EXPECT_TRUE(match.multiplicity == 1 && match.maxDistance == 0.0);
  const Algorithms::VisibilityCheck::GridElement element;
  EXPECT_TRUE(element.firstPose == 0 && element.lastPose == 0 && element.score == 0);
}

}  // namespace
