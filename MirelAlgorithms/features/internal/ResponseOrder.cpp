#include <MirelAlgorithms/features/internal/ResponseOrder.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace MirelAlgorithms {
namespace {

struct Entry {
  std::uint32_t key;  ///< the smaller, the stronger
  std::uint32_t index;
};

/// Integers order positive floats like their bits, negative ones the other way round.
std::uint32_t sortKey(float response) {
  const float rank = std::isnan(response) ? -std::numeric_limits<float>::infinity() : response + 0.0f;  // no -0
  const auto bits = std::bit_cast<std::uint32_t>(rank);
  return (bits & 0x80000000u) != 0 ? bits : ~(bits | 0x80000000u);
}

/// Radix sort in three passes of 11 bits, least significant first. A few tens of microseconds for ten thousand entries,
/// where comparison sorts, also parallel ones, take several times that in mispredicted branches.
void sortByKey(std::vector<Entry>& entries) {
  constexpr int digitBits = 11, digits = 1 << digitBits;
  std::vector<Entry> sorted(entries.size());
  for (int shift = 0; shift < 32; shift += digitBits) {
    const auto digit = [shift](const Entry& entry) { return (entry.key >> shift) % digits; };
    std::array<std::uint32_t, digits> place{};
    for (const Entry& entry : entries) ++place[digit(entry)];
    std::uint32_t sum = 0;
    for (std::uint32_t& p : place) p = std::exchange(sum, sum + p);
    for (const Entry& entry : entries) sorted[place[digit(entry)]++] = entry;
    entries.swap(sorted);
  }
}

/// Puts every run of equal responses in order of position.
void orderTies(std::vector<cv::KeyPoint>& keyPoints, const std::vector<Entry>& entries) {
  const auto above = [](const cv::KeyPoint& a, const cv::KeyPoint& b) {
    return a.pt.y != b.pt.y ? a.pt.y < b.pt.y : a.pt.x < b.pt.x;
  };
  for (std::size_t begin = 0, end = 0; begin < entries.size(); begin = end) {
    while (end < entries.size() && entries[end].key == entries[begin].key) ++end;
    if (end - begin > 1) std::sort(keyPoints.begin() + begin, keyPoints.begin() + end, above);
  }
}

}  // namespace

std::vector<cv::KeyPoint> strongestFirst(const std::vector<cv::KeyPoint>& keyPoints) {
  std::vector<Entry> entries(keyPoints.size());
  for (std::uint32_t i = 0; i < entries.size(); ++i) entries[i] = {sortKey(keyPoints[i].response), i};
  sortByKey(entries);

  std::vector<cv::KeyPoint> sorted;
  sorted.reserve(entries.size());
  for (const Entry& entry : entries) sorted.push_back(keyPoints[entry.index]);
  orderTies(sorted, entries);
  return sorted;
}

}  // namespace MirelAlgorithms
