#include <MirelAlgorithms/smoothing/internal/Holes.h>
#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace MirelAlgorithms {
namespace {

using Word = std::uint64_t;  // a bit for each of 64 pixels of a row
using Words = std::vector<Word>;
constexpr int wordBits = 64;

Word zerosOf64(const std::uint16_t* pixels) {
  const auto zeros = [&](int at) {
    return _mm_cmpeq_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels + at)), _mm_setzero_si128());
  };
  Word word = 0;
  for (int at = 0; at < wordBits; at += 16)
    word |= static_cast<Word>(_mm_movemask_epi8(_mm_packs_epi16(zeros(at), zeros(at + 8)))) << at;
  return word;
}

// Marks the zeros of a row, and says whether there are any.
bool markZeros(const std::uint16_t* pixels, int columns, Word* marks) {
  Word any = 0;
  const int rest = columns % wordBits;
  for (const auto* const end = pixels + (columns - rest); pixels != end; pixels += wordBits)
    any |= * marks++ = zerosOf64(pixels);
  if (rest > 0) {
    std::uint16_t last[wordBits];
    std::fill(std::copy(pixels, pixels + rest, last), last + wordBits, std::uint16_t{1});
    any |= * marks = zerosOf64(last);
  }
  return any != 0;
}

// Marks one pixel more to either side.
void widen(Words& marks) {
  Word before = 0;
  for (std::size_t i = 0; i < marks.size(); ++i) {
    const Word here = marks[i], after = i + 1 < marks.size() ? marks[i + 1] : 0;
    marks[i] = here | here << 1 | here >> 1 | before >> (wordBits - 1) | after << (wordBits - 1);
    before = here;
  }
}

void clearMarked(Word marks, std::uint16_t* pixels) {
  while (marks != 0) {
    const int first = std::countr_zero(marks), end = first + std::countr_one(marks >> first);
    std::fill(pixels + first, pixels + end, std::uint16_t{0});
    if (end == wordBits) return;
    marks &= ~Word{0} << end;
  }
}

void clearMarked(Words& marks, std::uint16_t* pixels, int columns) {
  if (columns % wordBits != 0) marks.back() &= (Word{1} << columns % wordBits) - 1;
  for (const Word word : marks) {
    clearMarked(word, pixels);
    pixels += wordBits;
  }
}

}  // namespace

void clearNearHoles(const cv::Mat& depth, int window, cv::Mat& image) {
  const int reach = window / 2;
  const std::size_t rowWords = (static_cast<std::size_t>(depth.cols) + wordBits - 1) / wordBits;
  Words zeros(static_cast<std::size_t>(depth.rows) * rowWords), near(rowWords);
  const auto zerosOf = [&](int y) { return zeros.data() + static_cast<std::size_t>(y) * rowWords; };

  std::vector<char> hasZeros(static_cast<std::size_t>(depth.rows));
  for (int y = 0; y < depth.rows; ++y)
    hasZeros[static_cast<std::size_t>(y)] = markZeros(depth.ptr<std::uint16_t>(y), depth.cols, zerosOf(y));

  for (int y = 0; y < depth.rows; ++y) {
    bool any = false;
    for (int v = std::max(y - reach, 0); v <= std::min(y + reach, depth.rows - 1); ++v) {
      if (!hasZeros[static_cast<std::size_t>(v)]) continue;
      const Word* const row = zerosOf(v);
      for (std::size_t i = 0; i < rowWords; ++i) near[i] = row[i] | (any ? near[i] : 0);
      any = true;
    }
    if (!any) continue;
    for (int step = 0; step < reach; ++step) widen(near);
    clearMarked(near, image.ptr<std::uint16_t>(y), depth.cols);
  }
}

}  // namespace MirelAlgorithms
