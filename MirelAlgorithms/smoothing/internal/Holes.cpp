#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/smoothing/internal/Holes.h>
#include <immintrin.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
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

// One pixel more to either side. Rows of marks have a word of nothing at either end.
void widen(const Words& marks, Words& wider) {
  constexpr int last = wordBits - 1;
  for (std::size_t i = 1; i + 1 < marks.size(); ++i)
    wider[i] = marks[i] | marks[i] << 1 | marks[i] >> 1 | marks[i - 1] >> last | marks[i + 1] << last;
}

// The rest of a row from a pixel on.
void clearFrom(int x, const Words& marks, std::uint16_t* pixels, int columns) {
  for (; x < columns; ++x)
    if (marks[static_cast<std::size_t>(x) / wordBits + 1] >> x % wordBits & 1) pixels[x] = 0;
}

// Without a branch: marks are too irregular to be foreseen.
void clearBaseline(const Words& marks, std::uint16_t* pixels, int columns) {
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(marks.data() + 1);
  const __m128i bits = _mm_setr_epi16(1, 2, 4, 8, 16, 32, 64, 128);
  int x = 0;
  for (; x + 8 <= columns; x += 8) {
    auto* const eight = reinterpret_cast<__m128i*>(pixels + x);
    const __m128i marked = _mm_and_si128(_mm_set1_epi16(bytes[x / 8]), bits);
    const __m128i kept = _mm_cmpeq_epi16(marked, _mm_setzero_si128());
    _mm_storeu_si128(eight, _mm_and_si128(_mm_loadu_si128(eight), kept));
  }
  clearFrom(x, marks, pixels, columns);
}

MIREL_TARGET_AVX2 void clearAvx2(const Words& marks, std::uint16_t* pixels, int columns) {
  const auto* const halves = reinterpret_cast<const char*>(marks.data() + 1);
  const __m256i bits = _mm256_setr_epi16(1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384, -32768);
  int x = 0;
  for (; x + 16 <= columns; x += 16) {
    std::int16_t marks16;
    std::memcpy(&marks16, halves + x / 8, sizeof marks16);
    auto* const sixteen = reinterpret_cast<__m256i*>(pixels + x);
    const __m256i marked = _mm256_and_si256(_mm256_set1_epi16(marks16), bits);
    const __m256i kept = _mm256_cmpeq_epi16(marked, _mm256_setzero_si256());
    _mm256_storeu_si256(sixteen, _mm256_and_si256(_mm256_loadu_si256(sixteen), kept));
  }
  clearFrom(x, marks, pixels, columns);
}

}  // namespace

void clearNearHoles(const cv::Mat& depth, int window, cv::Mat& image) {
  const int reach = window / 2;
  const auto clearMarked = cpuVariant() >= CpuVariant::avx2 ? clearAvx2 : clearBaseline;
  const std::size_t rowWords = (static_cast<std::size_t>(depth.cols) + wordBits - 1) / wordBits;
  Words zeros(static_cast<std::size_t>(depth.rows) * rowWords), near(rowWords + 2), wider(rowWords + 2);
  const auto zerosOf = [&](int y) { return zeros.data() + static_cast<std::size_t>(y) * rowWords; };

  std::vector<char> hasZeros(static_cast<std::size_t>(depth.rows));
  for (int y = 0; y < depth.rows; ++y)
    hasZeros[static_cast<std::size_t>(y)] = markZeros(depth.ptr<std::uint16_t>(y), depth.cols, zerosOf(y));

  for (int y = 0; y < depth.rows; ++y) {
    bool any = false;
    for (int v = std::max(y - reach, 0); v <= std::min(y + reach, depth.rows - 1); ++v) {
      if (!hasZeros[static_cast<std::size_t>(v)]) continue;
      const Word* const row = zerosOf(v);
      for (std::size_t i = 0; i < rowWords; ++i) near[i + 1] = row[i] | (any ? near[i + 1] : 0);
      any = true;
    }
    if (!any) continue;
    for (int step = 0; step < reach; ++step) {
      widen(near, wider);
      near.swap(wider);
    }
    clearMarked(near, image.ptr<std::uint16_t>(y), depth.cols);
  }
}

}  // namespace MirelAlgorithms
