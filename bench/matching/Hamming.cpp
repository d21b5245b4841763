// Distances called pair by pair against the same population counts in line, which is the limit.
#include <MirelAlgorithms/matching/Hamming.h>
#include <benchmark/benchmark.h>

#include <bit>

#include "Frames.h"

namespace {

using namespace MirelAlgorithms;

constexpr int descriptors = 500;

// Sum of the distances of all pairs.
template <class Distance>
void allPairs(benchmark::State& state, unsigned bits, const Distance& distance) {
  const bench::Frames frames = bench::makeFrames(descriptors, static_cast<int>(bits));
  const auto* first = frames.descriptors1.ptr<std::uint64_t>();
  const auto* second = frames.descriptors2.ptr<std::uint64_t>();
  const std::size_t words = bits / 64;
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < descriptors; ++i)
      for (std::size_t j = 0; j < descriptors; ++j) sum += distance(first + i * words, second + j * words);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * descriptors * descriptors);
}

void hamming_pairwise(benchmark::State& state, unsigned bits) {
  const unsigned words = bits / 64, shift = 2;
  if (bits == 128)
    allPairs(state, bits, [&](const std::uint64_t* a, const std::uint64_t* b) {
      return computeHammingDistance128(reinterpret_cast<const __m128i*>(a), reinterpret_cast<const __m128i*>(b), shift);
    });
  else
    allPairs(state, bits, [&](const std::uint64_t* a, const std::uint64_t* b) {
      return computeHammingDistance(a, b, words, shift);
    });
}

template <unsigned bits>
void popcnt_limit(benchmark::State& state) {
  allPairs(state, bits, [](const std::uint64_t* a, const std::uint64_t* b) {
    std::uint64_t sum = 0;
    for (unsigned w = 0; w < bits / 64; ++w) sum += static_cast<std::uint64_t>(std::popcount(a[w] ^ b[w]));
    return static_cast<unsigned short>(sum << 2);
  });
}

BENCHMARK_CAPTURE(hamming_pairwise, 128, 128)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(hamming_pairwise, 256, 256)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(hamming_pairwise, 512, 512)->Unit(benchmark::kMillisecond);
BENCHMARK(popcnt_limit<128>)->Name("popcnt_limit/128")->Unit(benchmark::kMillisecond);
BENCHMARK(popcnt_limit<256>)->Name("popcnt_limit/256")->Unit(benchmark::kMillisecond);
BENCHMARK(popcnt_limit<512>)->Name("popcnt_limit/512")->Unit(benchmark::kMillisecond);

}  // namespace
