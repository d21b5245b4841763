#include <MirelAlgorithms/frame/internal/Require.h>
#include <MirelAlgorithms/frame/internal/Settings.h>
#include <MirelAlgorithms/smoothing/SparsePoints.h>
#include <MirelAlgorithms/smoothing/internal/GridCells.h>
#include <MirelAlgorithms/smoothing/internal/NeighbourMedian.h>
#include <MirelAlgorithms/smoothing/internal/SmoothingSettings.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <span>

namespace MirelAlgorithms {
namespace {

using Rows = std::vector<int>;

constexpr int fewestColumns = 5, valueColumn = 4;
constexpr std::size_t judgedBytes = fewestColumns * sizeof(float);

Rows everyRow(int rows, int step) {
  Rows kept;
  for (int i = 0; i < rows; i += step) kept.push_back(i);
  return kept;
}

// The smallest step from `first` to 20 that leaves at most so many rows; 20 when none does.
int decimationStep(int rows, int first, std::int64_t most) {
  constexpr int last = 20;
  int step = first;
  while (step < last && rows / step > most) ++step;
  return step;
}

using Cell = std::span<const int>;

struct Spread {
  float least, most;

  explicit Spread(float first) : least(first), most(first) {}
  void add(float value) {
    least = std::min(least, value);
    most = std::max(most, value);
  }
  float width() const { return most - least; }
};

bool isCompact(const cv::Mat& points, Cell cell) {
  constexpr double widest = 0.2, mostUneven = 0.1;
  const float* const first = points.ptr<float>(cell.front());
  Spread spread2(first[2]), spread3(first[3]), spread4(first[valueColumn]);
  for (const int i : cell) {
    const float* const row = points.ptr<float>(i);
    spread2.add(row[2]);
    spread3.add(row[3]);
    spread4.add(row[valueColumn]);
  }
  const float s2 = spread2.width(), s3 = spread3.width(), s4 = spread4.width();
  return !(s4 > widest || s2 > widest || s3 > widest || std::abs(s2 - s3) > mostUneven);
}

// The rows at or below the mean, all of them or every second one.
void keepLower(const cv::Mat& points, Cell cell, int divisor, Rows& kept) {
  const auto value = [&](int row) { return points.ptr<float>(row)[valueColumn]; };
  double sum = 0.0;
  for (const int row : cell) sum += value(row);
  const double mean = sum / static_cast<double>(cell.size());
  int qualified = 0;
  for (const int row : cell)
    if (mean >= value(row) && ++qualified % divisor != 1) kept.push_back(row);
}

Rows lowerRowsOfCells(const cv::Mat& points, int mostCells, int divisor) {
  constexpr std::size_t fewestRows = 6;
  const GridCells cells(points, mostCells);
  Rows kept;
  for (std::size_t k = 0; k < cells.size(); ++k)
    if (const Cell cell = cells.rows(k); cell.size() >= fewestRows && isCompact(points, cell))
      keepLower(points, cell, divisor, kept);
  return kept;
}

Rows keptRows(const cv::Mat& points, const SparseSettings& settings) {
  switch (settings.mode & 0xF000) {
    case 0x2000:
      return rowsNearNeighbourMedian(points);
    case 0x3000:
      return lowerRowsOfCells(points, settings.mostPoints, 1);
    case 0x4000:
      return lowerRowsOfCells(points, settings.mostPoints, 2);
    case 0x5000:
      return everyRow(points.rows, decimationStep(points.rows, 1, 2 * std::int64_t{settings.mostPoints}));
    case 0x6000:
      return everyRow(points.rows, decimationStep(points.rows, 4, settings.mostPoints));
    default:
      return everyRow(points.rows, 1);
  }
}

// The columns that are judged. Elements of another type are taken for floats as they lie in memory.
cv::Mat judgedColumns(const cv::Mat& points) {
  if (points.type() == CV_32FC1) return points.colRange(0, fewestColumns);
  cv::Mat columns(points.rows, fewestColumns, CV_32FC1);
  for (int i = 0; i < points.rows; ++i) std::memcpy(columns.ptr(i), points.ptr(i), judgedBytes);
  return columns;
}

std::size_t bytesOfRow(const cv::Mat& points) { return static_cast<std::size_t>(points.cols) * points.elemSize(); }

cv::Mat rowsOf(const cv::Mat& points, const Rows& rows) {
  cv::Mat result(static_cast<int>(rows.size()), points.cols, points.type());
  for (int i = 0; i < result.rows; ++i)
    std::memcpy(result.ptr(i), points.ptr(rows[static_cast<std::size_t>(i)]), bytesOfRow(points));
  return result;
}

}  // namespace

bool smoothSparse3D(const cv::Mat& in, cv::Mat& out, SmartPtr<AttrContainer> attrs) {
  const auto settings = readSettings<SparseSettings>(attrs);
  const cv::Mat points = in;  // stays when `out` is the same matrix
  const bool enough = !points.empty() && points.cols >= fewestColumns && points.rows >= settings.leastPoints;
  if (enough && bytesOfRow(points) < judgedBytes)
    refuse("smoothSparse3D", "in", describe(points), "rows of at least five floats");
  out.release();
  if (!enough) return false;
  const Rows kept = keptRows(judgedColumns(points), settings);
  if (!kept.empty()) out = rowsOf(points, kept);
  return out.rows >= settings.leastPoints;
}

}  // namespace MirelAlgorithms
