/// The loops of `CircleSearch`, one set per instruction set.
#pragma once

#include <MirelAlgorithms/matching/internal/CircleSearch.h>

#include <cstring>

namespace MirelAlgorithms {

using CircleSearchLoop = BestTwo (*)(const CircleSearchJob&);

/// Each: the loop for descriptors of so many words, at least 1. To be called only where the instruction set is there.
CircleSearchLoop circleSearchBaseline(std::size_t words);
CircleSearchLoop circleSearchAvx2(std::size_t words);
CircleSearchLoop circleSearchAvx512(std::size_t words);

/// The words of a descriptor. A length known to the compiler keeps them in registers.
template <int length>
class QueryWords {
 public:
  QueryWords(const unsigned char* descriptor, std::size_t) { std::memcpy(words_, descriptor, sizeof words_); }
  static constexpr std::size_t size() { return length; }
  std::uint64_t operator[](std::size_t w) const { return words_[w]; }

 private:
  std::uint64_t words_[length];
};

/// A descriptor of any length.
template <>
class QueryWords<0> {
 public:
  QueryWords(const unsigned char* descriptor, std::size_t size) : descriptor_(descriptor), size_(size) {}
  std::size_t size() const { return size_; }
  std::uint64_t operator[](std::size_t w) const {
    std::uint64_t word;
    std::memcpy(&word, descriptor_ + w * sizeof word, sizeof word);
    return word;
  }

 private:
  const unsigned char* descriptor_;
  std::size_t size_;
};

}  // namespace MirelAlgorithms
