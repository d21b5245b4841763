#include <MirelAlgorithms/frame/internal/Require.h>
#include <MirelAlgorithms/geometry/UnionFind.h>

#include <algorithm>
#include <bit>
#include <utility>

namespace MirelAlgorithms {
namespace {

constexpr std::size_t wordBits = 64;

std::size_t index(int number) { return static_cast<std::size_t>(number); }

// Every other element on the way is hung below its grandparent, so the way halves each time it is walked.
inline std::size_t rootOf(std::int32_t* parents, std::int32_t e) {
  for (;;) {
    const std::int32_t parent = parents[e];
    if (parent < 0) return index(e);
    const std::int32_t grandparent = parents[parent];
    if (grandparent < 0) return index(parent);
    e = parents[e] = grandparent;
  }
}

}  // namespace

UnionFind::UnionFind(int n)
    : partitions_(std::max(n, 0)),
      parents_(index(partitions_), -1),
      ranks_(parents_.size()),
      isRoot_((parents_.size() + wordBits - 1) / wordBits, ~std::uint64_t{0}) {
  const std::size_t rest = parents_.size() % wordBits;
  if (rest != 0) isRoot_.back() >>= wordBits - rest;
}

inline std::size_t UnionFind::root(const char* function, const char* argument, int e) {
  if (index(e) >= parents_.size()) requireRange(function, argument, e, 0, static_cast<long long>(parents_.size()) - 1);
  return rootOf(parents_.data(), e);
}

void UnionFind::renameRoots() {
  if (!renumberNeeded_) return;
  numbers_.resize(parents_.size());
  roots_.clear();
  roots_.reserve(index(partitions_));
  for (std::size_t word = 0; word < isRoot_.size(); ++word)
    for (std::uint64_t bits = isRoot_[word]; bits != 0; bits &= bits - 1) {
      const std::size_t e = word * wordBits + index(std::countr_zero(bits));
      numbers_[e] = static_cast<std::int32_t>(roots_.size());
      roots_.push_back(static_cast<std::int32_t>(e));
    }
  renumberNeeded_ = false;
}

std::size_t UnionFind::rootOfNumber(const char* function, int k) {
  requireRange(function, "k", k, 0, partitions_ - 1LL);
  renameRoots();
  return index(roots_[index(k)]);
}

int UnionFind::findPartition(int e) { return static_cast<int>(root("findPartition", "e", e)); }

int UnionFind::findPartitionIndex(int e) {
  const std::size_t r = root("findPartitionIndex", "e", e);
  renameRoots();
  return numbers_[r];
}

int UnionFind::getCardinality(int e) { return -parents_[root("getCardinality", "e", e)]; }

int UnionFind::getCardinalityIndex(int k) { return -parents_[rootOfNumber("getCardinalityIndex", k)]; }

int UnionFind::getPartitionRepresentative(int k) {
  return static_cast<int>(rootOfNumber("getPartitionRepresentative", k));
}

std::vector<std::vector<int>> UnionFind::getPartitions() {
  renameRoots();
  std::vector<std::vector<int>> partitions(roots_.size());
  for (std::size_t k = 0; k < roots_.size(); ++k) partitions[k].reserve(index(-parents_[index(roots_[k])]));
  for (std::size_t e = 0; e < parents_.size(); ++e)
    partitions[index(numbers_[rootOf(parents_.data(), static_cast<int>(e))])].push_back(static_cast<int>(e));
  return partitions;
}

void UnionFind::unionPartitions(int a, int b) {
  std::size_t upper = root("unionPartitions", "a", a);
  std::size_t lower = root("unionPartitions", "b", b);
  if (upper == lower) return;
  if (ranks_[upper] < ranks_[lower])
    std::swap(upper, lower);
  else if (ranks_[upper] == ranks_[lower])
    ++ranks_[upper];
  parents_[upper] += parents_[lower];
  parents_[lower] = static_cast<std::int32_t>(upper);
  isRoot_[lower / wordBits] &= ~(std::uint64_t{1} << lower % wordBits);
  --partitions_;
  renumberNeeded_ = true;
}

}  // namespace MirelAlgorithms
