#include <MirelAlgorithms/smoothing/internal/ColumnRange.h>
#include <MirelAlgorithms/smoothing/internal/GridCells.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <optional>
#include <utility>

namespace MirelAlgorithms {
namespace {

// Corners of cells lie at origin + n * size.
struct Axis {
  float origin, size;

  float cornerBelow(float at) const { return std::floor((at - origin) / size) * size + origin; }
};

// A number with the order of the floats, -0 being 0.
std::uint32_t ordered(float value) {
  const auto bits = std::bit_cast<std::uint32_t>(value + 0.0f);
  return bits >> 31 ? ~bits : bits | 0x80000000u;
}

// Numbers the values it is asked about from 0 on, in the order they are first met: a hash table with open addressing.
class Numbering {
 public:
  int of(std::uint64_t value) {
    std::size_t slot = slotOf(value);
    for (; slots_[slot] >= 0; slot = (slot + 1) & (slots_.size() - 1))
      if (values_[static_cast<std::size_t>(slots_[slot])] == value) return slots_[slot];
    const int number = static_cast<int>(values_.size());
    slots_[slot] = number;
    values_.push_back(value);
    if (2 * values_.size() > slots_.size()) grow();
    return number;
  }
  const std::vector<std::uint64_t>& values() const { return values_; }

 private:
  std::size_t slotOf(std::uint64_t value) const {
    constexpr std::uint64_t golden = 0x9E3779B97F4A7C15;  // 2^64 / golden ratio; Knuth, TAOCP 3, 6.4
    value = (value ^ value >> 32) * golden;
    return static_cast<std::size_t>(value >> 32) & (slots_.size() - 1);
  }
  void grow() {
    slots_.assign(2 * slots_.size(), -1);
    for (std::size_t number = 0; number < values_.size(); ++number) {
      std::size_t slot = slotOf(values_[number]);
      while (slots_[slot] >= 0) slot = (slot + 1) & (slots_.size() - 1);
      slots_[slot] = static_cast<int>(number);
    }
  }

  std::vector<std::uint64_t> values_;
  std::vector<int> slots_ = std::vector<int>(1024, -1);
};

// None where the corner of the cell is not a number: such a row is alone in its cell.
std::optional<std::uint64_t> cellOf(const Axis& x, const Axis& y, const float* row) {
  const float cornerX = x.cornerBelow(row[0]), cornerY = y.cornerBelow(row[1]);
  if (std::isnan(cornerX) || std::isnan(cornerY)) return std::nullopt;
  return std::uint64_t{ordered(cornerX)} << 32 | ordered(cornerY);
}

}  // namespace

GridCells::GridCells(const cv::Mat& points, int mostCells) {
  const Range x = columnRange(points, 0), y = columnRange(points, 1);
  const float ex = x.extent(), ey = y.extent(), c = std::sqrt(ex * ey / static_cast<float>(mostCells));
  const Axis columns = {x.least, ex * c / ey}, rows = {y.least, ey * c / ex};

  constexpr int none = -1;
  Numbering numbering;
  std::vector<int> numbers(static_cast<std::size_t>(points.rows), none);
  for (int i = 0; i < points.rows; ++i)
    if (const auto cell = cellOf(columns, rows, points.ptr<float>(i)))
      numbers[static_cast<std::size_t>(i)] = numbering.of(*cell);

  // Few cells are sorted instead of many rows, which then go to their places.
  const auto& cells = numbering.values();
  std::vector<std::size_t> order(cells.size()), places(cells.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return cells[a] < cells[b]; });
  for (const int number : numbers)
    if (number != none) ++places[static_cast<std::size_t>(number)];
  std::size_t end = 0;
  for (const std::size_t number : order) {
    end += std::exchange(places[number], end);
    ends_.push_back(end);
  }
  rows_.resize(end);
  for (int i = 0; i < points.rows; ++i)
    if (const int number = numbers[static_cast<std::size_t>(i)]; number != none)
      rows_[places[static_cast<std::size_t>(number)]++] = i;
}

}  // namespace MirelAlgorithms
