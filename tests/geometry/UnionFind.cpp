#include <MirelAlgorithms/geometry/UnionFind.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <numeric>

#include "RandomPose.h"

using MirelAlgorithms::UnionFind;
using Lists = std::vector<std::vector<int>>;

namespace {

// Every element knows its root; merging visits all of them.
struct PlainSets {
  std::vector<int> roots, ranks;

  explicit PlainSets(int n) : roots(n), ranks(n) { std::iota(roots.begin(), roots.end(), 0); }

  void merge(int a, int b) {
    int upper = roots[a], lower = roots[b];
    if (upper == lower) return;
    if (ranks[upper] < ranks[lower])
      std::swap(upper, lower);
    else if (ranks[upper] == ranks[lower])
      ++ranks[upper];
    std::replace(roots.begin(), roots.end(), lower, upper);
  }
};

void expectSame(UnionFind& sets, const PlainSets& plain) {
  std::map<int, std::vector<int>> byRoot;
  for (int e = 0; e < static_cast<int>(plain.roots.size()); ++e) byRoot[plain.roots[e]].push_back(e);
  Lists lists;
  for (const auto& [root, list] : byRoot) {
    const int k = static_cast<int>(lists.size()), size = static_cast<int>(list.size());
    lists.push_back(list);
    EXPECT_EQ(sets.getPartitionRepresentative(k), root);
    EXPECT_EQ(sets.getCardinalityIndex(k), size);
    for (const int e : list) {
      EXPECT_EQ(sets.findPartitionIndex(e), k);
      EXPECT_EQ(sets.findPartition(e), root);
      EXPECT_EQ(sets.getCardinality(e), size);
    }
  }
  EXPECT_EQ(sets.getNumPartitions(), static_cast<int>(lists.size()));
  EXPECT_EQ(sets.getPartitions(), lists);
}

TEST(UnionFind, agreesWithPlainSets) {
  RandomPoses random(21);
  for (const int n : {1, 2, 63, 64, 65, 200, 640})
    for (const int unions : {0, n / 3, n, 3 * n}) {
      UnionFind sets(n);
      PlainSets plain(n);
      for (int i = 0; i < unions; ++i) {
        const int a = random.below(n), b = random.below(n);
        sets.unionPartitions(a, b);
        plain.merge(a, b);
        if (i % 50 == 0) sets.findPartitionIndex(a);  // numbers in between
      }
      expectSame(sets, plain);
    }
}

TEST(UnionFind, copiesAreIndependent) {
  UnionFind source(4), assigned(1);
  source.unionPartitions(0, 1);
  UnionFind copy(source), moved(std::move(copy));  // NOLINT(performance-move-const-arg)
  assigned = source;
  source.unionPartitions(2, 3);
  moved.unionPartitions(1, 2);
  EXPECT_EQ(source.getPartitions(), (Lists{{0, 1}, {2, 3}}));
  EXPECT_EQ(moved.getPartitions(), (Lists{{0, 1, 2}, {3}}));
  EXPECT_EQ(assigned.getPartitions(), (Lists{{0, 1}, {2}, {3}}));
  EXPECT_EQ(copy.getPartitionRepresentative(2), 3) << "what was moved from stays usable";
}

TEST(UnionFind, tenMillionElementsInAChain) {
  constexpr int n = 10000000;
  UnionFind sets(n);
  for (int e = n - 1; e > 0; --e) sets.unionPartitions(e - 1, e);
  EXPECT_EQ(sets.getNumPartitions(), 1);
  EXPECT_EQ(sets.findPartition(0), n - 2);
  EXPECT_EQ(sets.getCardinality(n - 1), n);
  EXPECT_EQ(sets.getCardinalityIndex(0), n);
}

}  // namespace
