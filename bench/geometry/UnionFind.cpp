// Partitions beside boost::disjoint_sets and a plain array: random unions, and the pixels of an image in blobs.
#include <MirelAlgorithms/geometry/UnionFind.h>
#include <benchmark/benchmark.h>

#include <cstdint>
#include <numeric>
#include <random>
#include <utility>
#include <vector>
#if MIREL_BENCH_BOOST
#include <boost/pending/disjoint_sets.hpp>
#endif

namespace {

struct Unions {
  int elements;
  std::vector<std::pair<int, int>> pairs;
};

Unions randomUnions() {
  Unions unions{1000000, {}};
  std::mt19937 random(8);
  std::uniform_int_distribution<int> element(0, unions.elements - 1);
  for (int i = 0; i < unions.elements; ++i) {
    const int a = element(random);
    unions.pairs.emplace_back(a, element(random));
  }
  return unions;
}

// Neighbouring pixels of equal value in an image of 1920 x 1080 with two random values.
Unions pixelUnions() {
  constexpr int columns = 1920, rows = 1080;
  Unions unions{columns * rows, {}};
  std::mt19937 random(9);
  std::vector<char> image(columns * rows);
  for (char& pixel : image) pixel = random() % 5 < 3;
  for (int pixel = 0; pixel < unions.elements; ++pixel) {
    const auto at = [&](int i) { return image[static_cast<std::size_t>(i)]; };
    if (pixel % columns != 0 && at(pixel) == at(pixel - 1)) unions.pairs.emplace_back(pixel - 1, pixel);
    if (pixel >= columns && at(pixel) == at(pixel - columns)) unions.pairs.emplace_back(pixel - columns, pixel);
  }
  return unions;
}

struct PlainArray {
  explicit PlainArray(int n) : parents(static_cast<std::size_t>(n)), ranks(parents.size()) {
    std::iota(parents.begin(), parents.end(), 0);
  }
  int find(int e) {
    int* const p = parents.data();
    while (p[e] != e) e = p[e] = p[p[e]];
    return e;
  }
  void unite(int a, int b) {
    auto upper = static_cast<std::size_t>(find(a)), lower = static_cast<std::size_t>(find(b));
    if (upper == lower) return;
    if (ranks[upper] < ranks[lower]) std::swap(upper, lower);
    if (ranks[upper] == ranks[lower]) ++ranks[upper];
    parents[lower] = static_cast<int>(upper);
  }
  std::vector<int> parents;
  std::vector<std::uint8_t> ranks;
};

template <Unions (*Make)()>
void unions(benchmark::State& state) {
  const Unions all = Make();
  for (auto _ : state) {
    MirelAlgorithms::UnionFind sets(all.elements);
    for (const auto& [a, b] : all.pairs) sets.unionPartitions(a, b);
    benchmark::DoNotOptimize(sets.getNumPartitions());
  }
}

template <Unions (*Make)()>
void unionsWithLists(benchmark::State& state) {
  const Unions all = Make();
  for (auto _ : state) {
    MirelAlgorithms::UnionFind sets(all.elements);
    for (const auto& [a, b] : all.pairs) sets.unionPartitions(a, b);
    benchmark::DoNotOptimize(sets.getPartitions());
  }
}

template <Unions (*Make)()>
void unionsPlainArray(benchmark::State& state) {
  const Unions all = Make();
  for (auto _ : state) {
    PlainArray sets(all.elements);
    for (const auto& [a, b] : all.pairs) sets.unite(a, b);
    benchmark::DoNotOptimize(sets.parents.data());
  }
}

// Numbers the sets by their representatives and lists their members.
template <Unions (*Make)()>
void unionsPlainArrayWithLists(benchmark::State& state) {
  const Unions all = Make();
  for (auto _ : state) {
    PlainArray sets(all.elements);
    for (const auto& [a, b] : all.pairs) sets.unite(a, b);
    std::vector<int> numbers(sets.parents.size());
    int count = 0;
    for (int e = 0; e < all.elements; ++e)
      if (sets.parents[static_cast<std::size_t>(e)] == e) numbers[static_cast<std::size_t>(e)] = count++;
    std::vector<std::vector<int>> lists(static_cast<std::size_t>(count));
    for (int e = 0; e < all.elements; ++e)
      lists[static_cast<std::size_t>(numbers[static_cast<std::size_t>(sets.find(e))])].push_back(e);
    benchmark::DoNotOptimize(lists.data());
  }
}

BENCHMARK(unions<randomUnions>)->Name("unions/random")->Unit(benchmark::kMillisecond);
BENCHMARK(unionsPlainArray<randomUnions>)->Name("unions_plain_array/random")->Unit(benchmark::kMillisecond);
BENCHMARK(unionsWithLists<randomUnions>)->Name("unions_with_lists/random")->Unit(benchmark::kMillisecond);
BENCHMARK(unionsPlainArrayWithLists<randomUnions>)
    ->Name("unions_plain_array_with_lists/random")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(unions<pixelUnions>)->Name("unions/pixels")->Unit(benchmark::kMillisecond);
BENCHMARK(unionsPlainArray<pixelUnions>)->Name("unions_plain_array/pixels")->Unit(benchmark::kMillisecond);
BENCHMARK(unionsWithLists<pixelUnions>)->Name("unions_with_lists/pixels")->Unit(benchmark::kMillisecond);
BENCHMARK(unionsPlainArrayWithLists<pixelUnions>)
    ->Name("unions_plain_array_with_lists/pixels")
    ->Unit(benchmark::kMillisecond);

#if MIREL_BENCH_BOOST
template <Unions (*Make)()>
void unionsBoost(benchmark::State& state) {
  const Unions all = Make();
  for (auto _ : state) {
    std::vector<int> ranks(static_cast<std::size_t>(all.elements)), parents(ranks.size());
    boost::disjoint_sets<int*, int*> sets(ranks.data(), parents.data());
    for (int e = 0; e < all.elements; ++e) sets.make_set(e);
    for (const auto& [a, b] : all.pairs) sets.union_set(a, b);
    benchmark::DoNotOptimize(parents.data());
  }
}
BENCHMARK(unionsBoost<randomUnions>)->Name("unions_boost/random")->Unit(benchmark::kMillisecond);
BENCHMARK(unionsBoost<pixelUnions>)->Name("unions_boost/pixels")->Unit(benchmark::kMillisecond);
#endif

}  // namespace
