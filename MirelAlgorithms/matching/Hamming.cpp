#include <MirelAlgorithms/matching/Hamming.h>

#include <bit>
#include <cstring>

namespace MirelAlgorithms {
namespace {

std::uint64_t differingBits(const void* a, const void* b) {
  std::uint64_t wordA, wordB;
  std::memcpy(&wordA, a, sizeof wordA);
  std::memcpy(&wordB, b, sizeof wordB);
  return static_cast<std::uint64_t>(std::popcount(wordA ^ wordB));
}

unsigned short scaled(std::uint64_t bits, unsigned int shift) {
  return shift < 16 ? static_cast<unsigned short>(bits << shift) : 0;
}

}  // namespace

unsigned short computeHammingDistance128(const __m128i* a, const __m128i* b, const unsigned int& shift) {
  const auto* wordsA = reinterpret_cast<const unsigned char*>(a);
  const auto* wordsB = reinterpret_cast<const unsigned char*>(b);
  return scaled(differingBits(wordsA, wordsB) + differingBits(wordsA + 8, wordsB + 8), shift);
}

unsigned short computeHammingDistance64(const std::uint64_t* a, const std::uint64_t* b, const unsigned int& shift) {
  return scaled(differingBits(a, b), shift);
}

unsigned short computeHammingDistance(const std::uint64_t* a, const std::uint64_t* b, const unsigned int& words,
                                      const unsigned int& shift) {
  if (words == 4)  // the usual length, without a loop
    return scaled(
        differingBits(a, b) + differingBits(a + 1, b + 1) + differingBits(a + 2, b + 2) + differingBits(a + 3, b + 3),
        shift);
  std::uint64_t bits = 0;
  for (unsigned int k = 0; k < words; ++k) bits += differingBits(a + k, b + k);
  return scaled(bits, shift);
}

}  // namespace MirelAlgorithms
