#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/frame/internal/Require.h>
#include <MirelAlgorithms/texture/internal/NearestRows.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

namespace MirelAlgorithms {
namespace {

// A distance and the row it belongs to in one number, so that smaller means nearer, and the first row among equals.
using Key = std::uint32_t;
constexpr int rowBits = 18, distanceBits = 32 - rowBits;
constexpr Key none = (std::numeric_limits<Key>::max)();

constexpr int orbWords = 4;
constexpr int tileRows = 512;  // rows of the second set whose words and keys stay in the first-level cache

// Rows of a matrix as 64-bit words, the last one filled up with zeros.
struct WordRows {
  int words;
  std::vector<std::uint64_t> data;

  explicit WordRows(const cv::Mat& descriptors)
      : words((descriptors.cols + 7) / 8), data(static_cast<std::size_t>(descriptors.rows) * words) {
    for (int i = 0; i < descriptors.rows; ++i)
      std::memcpy(&data[static_cast<std::size_t>(i) * words], descriptors.ptr(i),
                  static_cast<std::size_t>(descriptors.cols));
  }
  const std::uint64_t* row(int i) const { return &data[static_cast<std::size_t>(i) * words]; }
};

// The nearest and the next nearest key.
struct KeyPair {
  Key best = none, next = none;
};

// Up to `tileRows` rows of the second set: their first words side by side, then their second words ...
struct Tile {
  int first, count, words;
  std::vector<std::uint64_t> data;

  Tile(const WordRows& rows, int firstRow, int rowCount)
      : first(firstRow), count(rowCount), words(rows.words), data(static_cast<std::size_t>(words) * tileRows) {
    for (int j = 0; j < count; ++j)
      for (int w = 0; w < words; ++w) data[static_cast<std::size_t>(w) * tileRows + j] = rows.row(first + j)[w];
  }
};

template <bool pairs>
MIREL_ALWAYS_INLINE Key difference(std::uint64_t a, std::uint64_t b) {
  std::uint64_t bits = a ^ b;
  if constexpr (pairs) bits = (bits | bits >> 1) & 0x5555555555555555u;
  return static_cast<Key>(std::popcount(bits));
}

template <bool pairs, int words>
MIREL_ALWAYS_INLINE void measure(const std::uint64_t* row, const Tile& tile, Key* distances) {
  const std::uint64_t* other = tile.data.data();
  if constexpr (words == orbWords) {
    for (int j = 0; j < tile.count; ++j)
      distances[j] = difference<pairs>(row[0], other[j]) + difference<pairs>(row[1], other[tileRows + j]) +
                     difference<pairs>(row[2], other[2 * tileRows + j]) +
                     difference<pairs>(row[3], other[3 * tileRows + j]);
  } else {
    std::fill_n(distances, tile.count, Key{0});
    for (int w = 0; w < tile.words; ++w, other += tileRows)
      for (int j = 0; j < tile.count; ++j) distances[j] += difference<pairs>(row[w], other[j]);
  }
}

// Keys of a tile's rows. Arrays of the loop's own, which nothing else can point to, become vectors.
struct TileKeys {
  alignas(64) Key distances[tileRows];
  alignas(64) Key best[tileRows];
  alignas(64) Key next[tileRows];
};

// The two nearest of a row in the tile, and what the row is to the tile's rows.
MIREL_ALWAYS_INLINE KeyPair lower(TileKeys& keys, int row, int first, int count) {
  KeyPair ofRow;
  for (int j = 0; j < count; ++j) {
    const Key shifted = keys.distances[j] << rowBits, key = shifted | static_cast<Key>(row);
    keys.next[j] = std::min(keys.next[j], std::max(keys.best[j], key));
    keys.best[j] = std::min(keys.best[j], key);
    keys.distances[j] = shifted | static_cast<Key>(first + j);
    ofRow.best = std::min(ofRow.best, keys.distances[j]);
  }
  Key gap = none;  // from the nearest to the next nearest, less one: that of the nearest itself wraps around to none
  for (int j = 0; j < count; ++j) gap = std::min(gap, keys.distances[j] - ofRow.best - 1);
  if (gap != none) ofRow.next = ofRow.best + gap + 1;
  return ofRow;
}

struct KeyTables {
  std::vector<KeyPair> of1;
  std::vector<Key> best2, next2;
};

template <bool pairs, int words>
MIREL_ALWAYS_INLINE void compareTile(const WordRows& rows1, const Tile& tile, KeyTables& keys) {
  TileKeys inTile;
  const auto best2 = keys.best2.begin() + tile.first, next2 = keys.next2.begin() + tile.first;
  std::fill_n(inTile.best, tile.count, none);
  std::fill_n(inTile.next, tile.count, none);
  const int count1 = static_cast<int>(keys.of1.size());
  for (int i = 0; i < count1; ++i) {
    measure<pairs, words>(rows1.row(i), tile, inTile.distances);
    const KeyPair nearest = lower(inTile, i, tile.first, tile.count);
    KeyPair& ofRow = keys.of1[static_cast<std::size_t>(i)];
    ofRow.next = std::min(std::max(ofRow.best, nearest.best), std::min(ofRow.next, nearest.next));
    ofRow.best = std::min(ofRow.best, nearest.best);
  }
  std::copy_n(inTile.best, tile.count, best2);
  std::copy_n(inTile.next, tile.count, next2);
}

template <bool pairs>
MIREL_ALWAYS_INLINE void compareTile(const WordRows& rows1, const Tile& tile, KeyTables& keys) {
  if (tile.words == orbWords)
    compareTile<pairs, orbWords>(rows1, tile, keys);
  else
    compareTile<pairs, 0>(rows1, tile, keys);
}

using CompareTile = void (*)(const WordRows&, const Tile&, KeyTables&);

template <bool pairs>
void compareTileBaseline(const WordRows& rows1, const Tile& tile, KeyTables& keys) {
  compareTile<pairs>(rows1, tile, keys);
}

template <bool pairs>
MIREL_TARGET_AVX2 void compareTileAvx2(const WordRows& rows1, const Tile& tile, KeyTables& keys) {
  compareTile<pairs>(rows1, tile, keys);
}

template <bool pairs>
MIREL_TARGET_AVX512 void compareTileAvx512(const WordRows& rows1, const Tile& tile, KeyTables& keys) {
  compareTile<pairs>(rows1, tile, keys);
}

template <bool pairs>
CompareTile compareTileOfCpu() {
  switch (cpuVariant()) {
    case CpuVariant::avx512:
      return compareTileAvx512<pairs>;
    case CpuVariant::avx2:
      return compareTileAvx2<pairs>;
    default:
      return compareTileBaseline<pairs>;
  }
}

NearestRow unpack(Key best, Key next) {
  NearestRow nearest;
  if (best != none) {
    nearest.row = static_cast<int>(best & ((Key{1} << rowBits) - 1));
    nearest.distance = static_cast<int>(best >> rowBits);
  }
  if (next != none) nearest.nextDistance = static_cast<int>(next >> rowBits);
  return nearest;
}

NearestRows unpack(const KeyTables& keys) {
  NearestRows nearest;
  nearest.of1.reserve(keys.of1.size());
  nearest.of2.reserve(keys.best2.size());
  for (const KeyPair& pair : keys.of1) nearest.of1.push_back(unpack(pair.best, pair.next));
  for (std::size_t j = 0; j < keys.best2.size(); ++j) nearest.of2.push_back(unpack(keys.best2[j], keys.next2[j]));
  return nearest;
}

void requireDescriptors(const char* function, const char* argument, const cv::Mat& descriptors) {
  constexpr int mostRows = (1 << rowBits) - 1, mostColumns = ((1 << distanceBits) - 1) / 8;
  if (descriptors.type() != CV_8UC1 || descriptors.dims != 2 || descriptors.rows > mostRows ||
      descriptors.cols > mostColumns)
    refuse(function, argument, describe(descriptors) + ", " + std::to_string(descriptors.rows) + " rows",
           "CV_8UC1, at most " + std::to_string(mostRows) + " rows and " + std::to_string(mostColumns) + " columns");
}

}  // namespace

NearestRows findNearestRows(const char* function, const cv::Mat& descriptors1, const cv::Mat& descriptors2,
                            bool pairs) {
  requireDescriptors(function, "descriptors1", descriptors1);
  requireDescriptors(function, "descriptors2", descriptors2);
  requireRange(function, "columns of descriptors2", descriptors2.cols, descriptors1.cols, descriptors1.cols);
  const WordRows rows1(descriptors1), rows2(descriptors2);
  const auto count1 = static_cast<std::size_t>(descriptors1.rows), count2 = static_cast<std::size_t>(descriptors2.rows);
  KeyTables keys{std::vector<KeyPair>(count1), std::vector<Key>(count2, none), std::vector<Key>(count2, none)};
  const CompareTile compare = pairs ? compareTileOfCpu<true>() : compareTileOfCpu<false>();
  for (int first = 0; first < descriptors2.rows; first += tileRows)
    compare(rows1, Tile(rows2, first, std::min(tileRows, descriptors2.rows - first)), keys);
  return unpack(keys);
}

}  // namespace MirelAlgorithms
