#include <MirelAlgorithms/geometry/UnionFind.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "RandomPose.h"

using MirelAlgorithms::UnionFind;
using Lists = std::vector<std::vector<int>>;

namespace {

// Every element knows its root; merging visits all of them.
struct PlainSets {
  explicit PlainSets(int n) : roots(static_cast<std::size_t>(n)), ranks(roots.size()) {
    for (int e = 0; e < n; ++e) roots[static_cast<std::size_t>(e)] = e;
  }
  void merge(int a, int b) {
    int upper = root(a), lower = root(b);
    if (upper == lower) return;
    int &rankA = ranks[static_cast<std::size_t>(upper)], rankB = ranks[static_cast<std::size_t>(lower)];
    if (rankA < rankB)
      std::swap(upper, lower);
    else if (rankA == rankB)
      ++rankA;
    std::replace(roots.begin(), roots.end(), lower, upper);
  }
  int root(int e) const { return roots[static_cast<std::size_t>(e)]; }

  // Sets in ascending order of their roots.
  Lists lists() const {
    Lists byRoot(roots.size()), found;
    for (std::size_t e = 0; e < roots.size(); ++e)
      byRoot[static_cast<std::size_t>(roots[e])].push_back(static_cast<int>(e));
    std::copy_if(byRoot.begin(), byRoot.end(), std::back_inserter(found),
                 [](const auto& list) { return !list.empty(); });
    return found;
  }
  std::vector<int> roots, ranks;
};

void expectSame(UnionFind& sets, const PlainSets& plain) {
  const Lists lists = plain.lists();
  ASSERT_EQ(sets.getNumPartitions(), static_cast<int>(lists.size()));
  for (int k = 0; k < sets.getNumPartitions(); ++k) {
    const std::vector<int>& list = lists[static_cast<std::size_t>(k)];
    EXPECT_EQ(sets.getPartitionRepresentative(k), plain.root(list[0]));
    EXPECT_EQ(sets.getCardinalityIndex(k), static_cast<int>(list.size()));
    for (const int e : list) {
      EXPECT_EQ(sets.findPartitionIndex(e), k);
      EXPECT_EQ(sets.findPartition(e), plain.root(e));
      EXPECT_EQ(sets.getCardinality(e), static_cast<int>(list.size()));
    }
  }
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

TEST(UnionFind, numbersFollowTheSurvivingRoots) {
  UnionFind sets(5);
  sets.unionPartitions(3, 1);
  EXPECT_EQ(sets.getPartitions(), (Lists{{0}, {2}, {1, 3}, {4}}));
  EXPECT_EQ(sets.getPartitionRepresentative(2), 3);
  sets.unionPartitions(1, 3);
  EXPECT_EQ(sets.getPartitions(), (Lists{{0}, {2}, {1, 3}, {4}}));
}

TEST(UnionFind, copiesAreIndependent) {
  auto source = std::make_unique<UnionFind>(4);
  source->unionPartitions(0, 1);
  UnionFind copy(*source), assigned(1), moved(std::move(copy));  // NOLINT(performance-move-const-arg)
  assigned = *source;
  source->unionPartitions(2, 3);
  EXPECT_EQ(moved.getPartitions(), (Lists{{0, 1}, {2}, {3}}));
  moved.unionPartitions(1, 2);
  EXPECT_EQ(source->getPartitions(), (Lists{{0, 1}, {2, 3}}));
  source.reset();
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
