#include "smoothing/DropReasons.h"

#include <MirelAlgorithms/smoothing/SparsePoints.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <opencv2/core.hpp>
#include <tuple>

namespace mirel {

namespace {

/// The rows of one cell, ascending.
struct Cell {
  float x, y;
  std::vector<int> rows;
};

std::vector<Cell> cellsOf(const cv::Mat& points, const CellGrid& grid) {
  std::vector<std::tuple<float, float, int>> records;
  for (int row = 0; row < points.rows; ++row) {
    const float x = std::floor((points.at<float>(row, 0) - grid.x) / grid.width) * grid.width + grid.x;
    const float y = std::floor((points.at<float>(row, 1) - grid.y) / grid.height) * grid.height + grid.y;
    if (!std::isnan(x) && !std::isnan(y)) records.emplace_back(x, y, row);
  }
  std::sort(records.begin(), records.end());
  std::vector<Cell> cells;
  for (const auto& [x, y, row] : records) {
    if (cells.empty() || cells.back().x != x || cells.back().y != y) cells.push_back({x, y, {}});
    cells.back().rows.push_back(row);
  }
  return cells;
}

float spread(const cv::Mat& points, const std::vector<int>& rows, int column) {
  const auto less = [&](int a, int b) { return points.at<float>(a, column) < points.at<float>(b, column); };
  const auto [low, high] = std::minmax_element(rows.begin(), rows.end(), less);
  return points.at<float>(*high, column) - points.at<float>(*low, column);
}

/// What the cell as a whole speaks against; kept when nothing.
Fate judgeCell(const cv::Mat& points, const std::vector<int>& rows) {
  if (rows.size() < 6) return Fate::smallCell;
  const float s2 = spread(points, rows, 2), s3 = spread(points, rows, 3), s4 = spread(points, rows, 4);
  if (std::max({s2, s3, s4}) > 0.2) return Fate::wideCell;
  return std::abs(s2 - s3) > 0.1 ? Fate::unevenCell : Fate::kept;
}

void markCell(const PointRun& run, const std::vector<int>& rows, std::vector<Fate>& fates) {
  const Fate cell = judgeCell(run.points, rows);
  double sum = 0;
  for (const int row : rows) sum += run.points.at<float>(row, 4);
  const bool everySecond = run.method() == 0x4000;
  int qualified = 0;
  for (const int row : rows) {
    Fate& fate = fates[static_cast<std::size_t>(row)];
    fate = cell;
    if (cell != Fate::kept) continue;
    const bool low = sum / static_cast<double>(rows.size()) >= run.points.at<float>(row, 4);
    if (low) ++qualified;
    fate = !low ? Fate::aboveMean : everySecond && qualified % 2 == 1 ? Fate::alternate : Fate::kept;
  }
}

/// With equal values everywhere no row is far from the median: those that still go have too few neighbours.
std::vector<Fate> neighbourFates(const PointRun& run) {
  cv::Mat flat = run.points.clone();
  flat.col(4) = 0;
  bool ignored = false;
  std::vector<Fate> fates(static_cast<std::size_t>(flat.rows), Fate::lonely);
  for (const int row : keptRows(flat, run.settings, ignored)) fates[static_cast<std::size_t>(row)] = Fate::offMedian;
  for (const int row : run.kept) fates[static_cast<std::size_t>(row)] = Fate::kept;
  return fates;
}

std::vector<Fate> derivedFates(const PointRun& run) {
  const auto rows = static_cast<std::size_t>(run.points.rows);
  if (run.points.rows < run.leastPoints) return std::vector<Fate>(rows, Fate::shortList);
  if (run.method() == 0x2000) return neighbourFates(run);
  if (run.hasGrid()) {
    std::vector<Fate> fates(rows, Fate::smallCell);
    for (const Cell& cell : cellsOf(run.points, gridOver(run.points, run.mostPoints))) markCell(run, cell.rows, fates);
    return fates;
  }
  std::vector<Fate> fates(rows, Fate::kept);
  if (run.method() != 0x5000 && run.method() != 0x6000) return fates;
  const std::size_t step = run.kept.size() > 1 ? static_cast<std::size_t>(run.kept[1]) : rows;
  for (std::size_t row = 0; row < rows; ++row) fates[row] = row % step == 0 ? Fate::kept : Fate::betweenSteps;
  return fates;
}

}  // namespace

FateName nameOf(Fate fate) {
  constexpr std::array<FateName, 11> names = {{{"kept", "kept"},
                                               {"short_list", "list too short"},
                                               {"few_neighbours", "fewer than 6 neighbours"},
                                               {"off_median", "0.1 or more off the median"},
                                               {"small_cell", "cell with fewer than 6 points"},
                                               {"wide_cell", "cell spreads more than 0.2"},
                                               {"uneven_cell", "cell's spreads differ by more than 0.1"},
                                               {"above_mean", "above the cell's mean"},
                                               {"alternate", "every other one of a cell"},
                                               {"between_steps", "between the steps"},
                                               {"unexplained", "not kept, reason unknown"}}};
  return names[static_cast<std::size_t>(fate)];
}

bool CellGrid::isThere() const { return std::isfinite(width) && std::isfinite(height) && width > 0 && height > 0; }

CellGrid gridOver(const cv::Mat& points, int mostCells) {
  const auto range = [&](int column) {
    double low = 0, high = 0;
    cv::minMaxLoc(points.col(column), &low, &high);
    return std::pair(static_cast<float>(low), static_cast<float>(high) - static_cast<float>(low));
  };
  const auto [x, ex] = range(0);
  const auto [y, ey] = range(1);
  const float c = std::sqrt(ex * ey / static_cast<float>(mostCells));
  return {x, y, ex * c / ey, ey * c / ex};
}

std::vector<int> keptRows(const cv::Mat& points,
                          const MirelAlgorithms::SmartPtr<MirelAlgorithms::AttrContainer>& settings, bool& enough) {
  cv::Mat numbered(points.rows, points.cols + 1, CV_32FC1), kept;  // further columns are carried along
  points.copyTo(numbered.colRange(0, points.cols));
  for (int row = 0; row < points.rows; ++row) numbered.at<float>(row, points.cols) = std::bit_cast<float>(row);
  enough = MirelAlgorithms::smoothSparse3D(numbered, kept, settings);
  std::vector<int> rows;
  rows.reserve(static_cast<std::size_t>(kept.rows));
  for (int i = 0; i < kept.rows; ++i) rows.push_back(std::bit_cast<int>(kept.at<float>(i, points.cols)));
  return rows;
}

std::vector<Fate> fatesOf(const PointRun& run) {
  std::vector<Fate> fates = derivedFates(run);
  std::vector<bool> kept(fates.size());
  for (const int row : run.kept) kept[static_cast<std::size_t>(row)] = true;
  for (std::size_t row = 0; row < fates.size(); ++row) {
    if (kept[row]) fates[row] = Fate::kept;
    if (!kept[row] && fates[row] == Fate::kept) fates[row] = Fate::unexplained;
  }
  return fates;
}

std::vector<Fate> possibleReasons(const PointRun& run) {
  if (run.points.rows < run.leastPoints) return {Fate::shortList};
  switch (run.method()) {
    case 0x2000:
      return {Fate::lonely, Fate::offMedian};
    case 0x3000:
      return {Fate::smallCell, Fate::wideCell, Fate::unevenCell, Fate::aboveMean};
    case 0x4000:
      return {Fate::smallCell, Fate::wideCell, Fate::unevenCell, Fate::aboveMean, Fate::alternate};
    case 0x5000:
    case 0x6000:
      return {Fate::betweenSteps};
    default:
      return {};
  }
}

}  // namespace mirel
