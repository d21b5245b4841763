#include "../Capabilities.h"

namespace MirelAlgorithms {
namespace {

std::uint64_t frusta(const Inputs& in) {
  std::vector<Frustum> views;
  Digest digest;
  for (const auto& [number, pose] : in.scan.poses) {
    const Mat4d m = toMat4d(pose.transpose());
    views.emplace_back(m, 1.0);
    digest(views.back().checkPose(toMat4d(in.scan.poses.begin()->second.transpose())));
    for (int i = 0; i < in.side; ++i) {
      const Eigen::Vector3d& p = in.scan.points[static_cast<std::size_t>(i)].first;
      digest(Frustum::contains(Frustum(m, 0.1, 9, 1, 1), {p.x(), p.y(), p.z()}));
    }
  }
  for (const Frustum& a : views) {
    const Frustum& b = views[5];
    digest(Frustum::intersect(a, b))(Frustum::intersect(a.pose, b.pose, 0.4, 2, 1, 1, 1));
    digest(Frustum::sameViewDirection(a.pose, b.pose, 1.0));
  }
  return digest;
}

std::uint64_t unionFind(const Inputs& in) {
  UnionFind sets(4 * in.side);
  Digest digest;
  for (int i = 1; i < 2 * in.side; ++i) {
    sets.unionPartitions(i, i * i % (3 * in.side));
    const int number = sets.findPartitionIndex(i);
    digest(sets.findPartition(i))(sets.getCardinality(i))(sets.getCardinalityIndex(number));
    digest(sets.getPartitionRepresentative(number))(sets.getNumPartitions());
  }
  return digest(sets.getPartitions());
}

std::uint64_t visibility(const Inputs& in) {
  Algorithms::VisibilityCheck check(0.25);
  check.updateGrid(in.scan.points, in.scan.poses, in.scan.sensors);
  std::uint64_t cells = 0;  // in any order
  for (const auto& [key, e] : check.getGrid().cells())
    cells += Digest()(key.x)(key.y)(key.z)(e.points)(e.rays)(e.firstPose)(e.lastPose)(e.score);
  Digest digest;
  digest(cells);
  for (Algorithms::VisibilityCheck copy = check;;) {
    const auto [seen, seenBy, first, last, score] = copy.getCurrentMax();
    digest(seen)(seenBy)(first)(last)(score);
    if (score == 0) return digest;
  }
}

}  // namespace

std::vector<Capability> geometryCapabilities() {
  return {
      {"geometry_frusta", frusta},
      {"geometry_unionFind", unionFind},
      {"geometry_visibility", visibility},
  };
}

}  // namespace MirelAlgorithms
