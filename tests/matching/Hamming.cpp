#include <MirelAlgorithms/matching/Hamming.h>
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

using namespace MirelAlgorithms;

namespace {

// Bit by bit.
unsigned differingBits(const unsigned char* a, const unsigned char* b, std::size_t bytes) {
  unsigned count = 0;
  for (std::size_t bit = 0; bit < 8 * bytes; ++bit) count += ((a[bit / 8] ^ b[bit / 8]) >> bit % 8) & 1;
  return count;
}

TEST(Hamming, RandomDescriptorsAtAnyAddress) {
  std::mt19937 random(1);
  std::vector<unsigned char> memory(2 * 80);
  for (int round = 0; round < 500; ++round) {
    for (unsigned char& byte : memory) byte = static_cast<unsigned char>(random());
    const unsigned char *a = &memory[random() % 16], *b = &memory[80 + random() % 16];
    const auto *wordsA = reinterpret_cast<const std::uint64_t*>(a), *wordsB = reinterpret_cast<const std::uint64_t*>(b);
    const unsigned words = random() % 9, shift = random() % 10;
    const auto expected = [&](std::size_t bytes) {
      return static_cast<unsigned short>(differingBits(a, b, bytes) << shift);
    };
    EXPECT_EQ(computeHammingDistance(wordsA, wordsB, words, shift), expected(8 * words)) << words << " << " << shift;
    EXPECT_EQ(computeHammingDistance64(wordsA, wordsB, shift), expected(8));
    EXPECT_EQ(
        computeHammingDistance128(reinterpret_cast<const __m128i*>(a), reinterpret_cast<const __m128i*>(b), shift),
        expected(16));
  }
}

TEST(Hamming, ShiftIsTakenOfTheWholeSumAndTruncated) {
  const std::uint64_t zeros[4] = {}, ones[4] = {~0ull, ~0ull, ~0ull, ~0ull};
  const auto* zeros128 = reinterpret_cast<const __m128i*>(zeros);
  const auto* ones128 = reinterpret_cast<const __m128i*>(ones);
  struct Row {
    unsigned shift;
    unsigned short of64, of128, of256;
  };
  for (const Row& row : {Row{0, 64, 128, 256}, Row{2, 256, 512, 1024}, Row{3, 512, 1024, 2048}, Row{8, 16384, 32768, 0},
                         Row{9, 32768, 0, 0}, Row{15, 0, 0, 0}}) {
    EXPECT_EQ(computeHammingDistance64(zeros, ones, row.shift), row.of64) << row.shift;
    EXPECT_EQ(computeHammingDistance128(zeros128, ones128, row.shift), row.of128) << row.shift;
    EXPECT_EQ(computeHammingDistance(zeros, ones, 4, row.shift), row.of256) << row.shift;
    EXPECT_EQ(computeHammingDistance(ones, ones, 4, row.shift), 0) << row.shift;
  }
}

}  // namespace
