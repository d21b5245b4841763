#include <MirelAlgorithms/matching/Hamming.h>
#include <gtest/gtest.h>

#include <random>
#include <vector>

using namespace MirelAlgorithms;

namespace {

// Bit by bit; the sum is shifted, and its low 16 bits are taken.
unsigned short literalDistance(const void* a, const void* b, std::size_t bytes, unsigned shift) {
  const auto *bytesA = static_cast<const unsigned char*>(a), *bytesB = static_cast<const unsigned char*>(b);
  unsigned count = 0;
  for (std::size_t bit = 0; bit < 8 * bytes; ++bit) count += ((bytesA[bit / 8] ^ bytesB[bit / 8]) >> bit % 8) & 1;
  return static_cast<unsigned short>(shift < 16 ? count << shift : 0);
}

TEST(Hamming, RandomDescriptorsAtAnyAddress) {
  std::mt19937 random(1);
  std::vector<unsigned char> memory(2 * 80);
  for (int round = 0; round < 2000; ++round) {
    for (unsigned char& byte : memory) byte = static_cast<unsigned char>(random());
    const auto* a = reinterpret_cast<const std::uint64_t*>(&memory[random() % 16]);
    const auto* b = reinterpret_cast<const std::uint64_t*>(&memory[80 + random() % 16]);
    const auto *a128 = reinterpret_cast<const __m128i*>(a), *b128 = reinterpret_cast<const __m128i*>(b);
    const unsigned words = random() % 9, shift = random() % 20;
    EXPECT_EQ(computeHammingDistance(a, b, words, shift), literalDistance(a, b, 8 * words, shift)) << words;
    EXPECT_EQ(computeHammingDistance64(a, b, shift), literalDistance(a, b, 8, shift)) << shift;
    EXPECT_EQ(computeHammingDistance128(a128, b128, shift), literalDistance(a, b, 16, shift)) << shift;
  }
}

}  // namespace
