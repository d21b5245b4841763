#include <MirelAlgorithms/smoothing/internal/GridCells.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <optional>

namespace MirelAlgorithms {
namespace {

// Corners of cells lie at origin + n * size.
struct Axis {
  float origin, size;

  float cornerBelow(float at) const { return std::floor((at - origin) / size) * size + origin; }
};

struct Range {
  float least, most;

  float extent() const { return most - least; }
};

Range rangeOf(const cv::Mat& points, int column) {
  double least = 0.0, most = 0.0;
  cv::minMaxLoc(points.col(column), &least, &most);
  return {static_cast<float>(least), static_cast<float>(most)};
}

// A number with the order of the floats, -0 being 0.
std::uint32_t ordered(float value) {
  const auto bits = std::bit_cast<std::uint32_t>(value + 0.0f);
  return bits >> 31 ? ~bits : bits | 0x80000000u;
}

struct Record {
  std::uint64_t cell;
  int row;

  bool operator<(const Record& other) const { return cell != other.cell ? cell < other.cell : row < other.row; }
};

// None where the corner of the cell is not a number: such a row is alone in its cell.
std::optional<std::uint64_t> cellOf(const Axis& x, const Axis& y, const float* row) {
  const float cornerX = x.cornerBelow(row[0]), cornerY = y.cornerBelow(row[1]);
  if (std::isnan(cornerX) || std::isnan(cornerY)) return std::nullopt;
  return std::uint64_t{ordered(cornerX)} << 32 | ordered(cornerY);
}

}  // namespace

std::vector<CellRows> rowsByCell(const cv::Mat& points, int mostCells, std::size_t fewestRows) {
  const Range x = rangeOf(points, 0), y = rangeOf(points, 1);
  const float ex = x.extent(), ey = y.extent(), c = std::sqrt(ex * ey / static_cast<float>(mostCells));
  const Axis columns = {x.least, ex * c / ey}, rows = {y.least, ey * c / ex};

  std::vector<Record> records;
  records.reserve(static_cast<std::size_t>(points.rows));
  for (int i = 0; i < points.rows; ++i)
    if (const auto cell = cellOf(columns, rows, points.ptr<float>(i))) records.push_back({*cell, i});
  std::sort(records.begin(), records.end());

  std::vector<CellRows> cells;
  for (auto begin = records.begin(); begin != records.end();) {
    const auto end = std::find_if(begin, records.end(), [=](const Record& r) { return r.cell != begin->cell; });
    if (static_cast<std::size_t>(end - begin) >= fewestRows) {
      CellRows& cell = cells.emplace_back();
      for (auto r = begin; r != end; ++r) cell.push_back(r->row);
    }
    begin = end;
  }
  return cells;
}

}  // namespace MirelAlgorithms
