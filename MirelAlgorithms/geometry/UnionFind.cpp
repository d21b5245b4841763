#include <MirelAlgorithms/frame/internal/Require.h>
#include <MirelAlgorithms/geometry/UnionFind.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <numeric>
#include <utility>

namespace MirelAlgorithms {
namespace {

constexpr int wordBits = 64;

}  // namespace

UnionFind::UnionFind(int n) : partitions_(std::max(n, 0)) {
  const auto size = static_cast<std::size_t>(partitions_);
  parents_.resize(size);
  std::iota(parents_.begin(), parents_.end(), 0);
  cardinalities_.assign(size, 1);
  ranks_.assign(size, 0);
  numbers_.resize(size);
  isRoot_.assign((size + wordBits - 1) / wordBits, ~std::uint64_t{0});
  if (size % wordBits != 0) isRoot_.back() >>= wordBits - size % wordBits;
}

// Every other element on the way is hung below its grandparent, so the way halves each time it is walked.
int UnionFind::root(int e) {
  std::int32_t* const parents = parents_.data();
  while (parents[e] != e) {
    parents[e] = parents[parents[e]];
    e = parents[e];
  }
  return e;
}

int UnionFind::checkedRoot(const char* function, const char* argument, int e) {
  requireRange(function, argument, e, 0, static_cast<long long>(parents_.size()) - 1);
  return root(e);
}

void UnionFind::renameRoots() {
  if (!renumberNeeded_) return;
  roots_.clear();
  roots_.reserve(static_cast<std::size_t>(partitions_));
  for (std::size_t word = 0; word < isRoot_.size(); ++word)
    for (std::uint64_t bits = isRoot_[word]; bits != 0; bits &= bits - 1) {
      const int e = static_cast<int>(word) * wordBits + std::countr_zero(bits);
      numbers_[static_cast<std::size_t>(e)] = static_cast<std::int32_t>(roots_.size());
      roots_.push_back(e);
    }
  renumberNeeded_ = false;
}

int UnionFind::rootOfNumber(const char* function, int k) {
  requireRange(function, "k", k, 0, static_cast<long long>(partitions_) - 1);
  renameRoots();
  return roots_[static_cast<std::size_t>(k)];
}

int UnionFind::findPartition(int e) { return checkedRoot("findPartition", "e", e); }

int UnionFind::findPartitionIndex(int e) {
  const int r = checkedRoot("findPartitionIndex", "e", e);
  renameRoots();
  return numbers_[static_cast<std::size_t>(r)];
}

int UnionFind::getCardinality(int e) {
  return cardinalities_[static_cast<std::size_t>(checkedRoot("getCardinality", "e", e))];
}

int UnionFind::getCardinalityIndex(int k) {
  return cardinalities_[static_cast<std::size_t>(rootOfNumber("getCardinalityIndex", k))];
}

int UnionFind::getPartitionRepresentative(int k) { return rootOfNumber("getPartitionRepresentative", k); }

std::vector<std::vector<int>> UnionFind::getPartitions() {
  renameRoots();
  std::vector<std::vector<int>> partitions(roots_.size());
  for (std::size_t k = 0; k < roots_.size(); ++k)
    partitions[k].reserve(static_cast<std::size_t>(cardinalities_[static_cast<std::size_t>(roots_[k])]));
  for (int e = 0; e < static_cast<int>(parents_.size()); ++e)
    partitions[static_cast<std::size_t>(numbers_[static_cast<std::size_t>(root(e))])].push_back(e);
  return partitions;
}

void UnionFind::unionPartitions(int a, int b) {
  auto upper = static_cast<std::size_t>(checkedRoot("unionPartitions", "a", a));
  auto lower = static_cast<std::size_t>(checkedRoot("unionPartitions", "b", b));
  if (upper == lower) return;
  if (ranks_[upper] < ranks_[lower])
    std::swap(upper, lower);
  else if (ranks_[upper] == ranks_[lower])
    ++ranks_[upper];
  parents_[lower] = static_cast<std::int32_t>(upper);
  cardinalities_[upper] += cardinalities_[lower];
  isRoot_[lower / wordBits] &= ~(std::uint64_t{1} << lower % wordBits);
  --partitions_;
  renumberNeeded_ = true;
}

}  // namespace MirelAlgorithms
