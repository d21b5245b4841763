#include "tracking/FeatureGrid.h"

#include <algorithm>
#include <limits>

namespace mirel {

namespace {

constexpr int mostCells = 100;  // per side; cells of finer grids are not listed

bool isFixedPoint(const Settings& settings) { return settings.integer("FBMType", "retrieveFeatures") == 0; }

/// The settings with a budget that cuts nothing. The budget is the largest integer, so that even one-pixel cells get
/// more than any detector finds in them.
Settings withoutQuotas(Settings settings) {
  settings.set("FBMnFeatures", (std::numeric_limits<int>::max)());
  if (isFixedPoint(settings)) {
    settings.set("FBMnCells", 1);  // its candidates do not depend on the cells
    settings.set("FBMUseAutoThreshold", false);
    for (const char* dump : {"FBMWriteSobel", "FBMWriteGradMult", "FBMWriteCovar", "FBMWriteEigenvals"}) {
      settings.set(dump, false);
    }
  } else if (settings.integer("FBMType", "retrieveFeatures") != 2) {
    settings.set("FBMType", 2);  // the same ORB without sub-pixel refinement, which may move points to another cell
    settings.set("FBMFeatureType", 3);
  }
  return settings;
}

// --- fixed-point pipeline: cells of any size, features by position

/// Number of cells before the one that holds `at`, with the arithmetic of the library.
int cellAt(float at, int length, int cells) {
  const int cell = static_cast<int>(static_cast<float>(cells) * at / static_cast<float>(length));
  return std::clamp(cell, 0, cells - 1);
}

void divideWhole(FeatureGrid& grid, cv::Size image) {
  grid.columns = grid.rows = grid.cellsPerSide;
  if (grid.cellsPerSide > mostCells) return;
  const auto edge = [&](int cell, int length) {
    if (cell == 0) return -0.5f;
    if (cell == grid.cellsPerSide) return static_cast<float>(length) - 0.5f;
    return static_cast<float>(cell) * static_cast<float>(length) / static_cast<float>(grid.cellsPerSide);
  };
  for (int y = 0; y < grid.rows; ++y) {
    for (int x = 0; x < grid.columns; ++x) {
      const cv::Point2f corner(edge(x, image.width), edge(y, image.height));
      grid.cells.push_back({{corner, cv::Point2f(edge(x + 1, image.width), edge(y + 1, image.height))}});
    }
  }
}

void countByPosition(FeatureGrid& grid, cv::Size image, const std::vector<cv::KeyPoint>& points, int GridCell::*count) {
  for (const cv::KeyPoint& point : points) {
    const int row = cellAt(point.pt.y, image.height, grid.rows);
    const int cell = row * grid.columns + cellAt(point.pt.x, image.width, grid.columns);
    ++(grid.cells[static_cast<std::size_t>(cell)].*count);
  }
}

// --- other detectors: cells of whole pixels, features in the order of the cells

/// Cells of `step` pixels along `length`: one begins wherever half a cell is left.
int cellsAlong(int length, int step) {
  int count = 0;
  while (count * step < length - step / 2) ++count;
  return count;
}

void divideInPixels(FeatureGrid& grid, cv::Size image) {
  const cv::Size size = image / grid.cellsPerSide;
  grid.columns = cellsAlong(image.width, size.width);
  grid.rows = cellsAlong(image.height, size.height);
  if (grid.cellsPerSide > mostCells) return;
  for (int y = 0; y < grid.rows; ++y) {
    for (int x = 0; x < grid.columns; ++x) {
      const cv::Point2f corner(static_cast<float>(x * size.width) - 0.5f, static_cast<float>(y * size.height) - 0.5f);
      grid.cells.push_back({{corner, cv::Size2f(size)}});
    }
  }
}

/// How far a point lies outside a cell.
float distanceOutside(cv::Point2f point, const cv::Rect2f& area) {
  const cv::Point2f end = area.br();
  return std::max({area.x - point.x, point.x - end.x, area.y - point.y, point.y - end.y, 0.0f});
}

/// One way to number the points up to some point of the list.
struct Numbering {
  int cell;            ///< of that point
  float cost;          ///< sum of the distances outside
  std::size_t before;  ///< place of the way it continues in the list of the point before
};

using Numberings = std::vector<Numbering>;

Numberings continued(const Numberings& last, cv::Point2f point, const FeatureGrid& grid) {
  constexpr float reach = 4;  // how far outside its cell a detector may place a point, pixels
  const cv::Rect2f& first = grid.cells.front().area;
  const auto index = [](float at, float step, int count) {
    return std::clamp(static_cast<int>((at + 0.5f) / step), 0, count - 1);
  };
  const int left = index(point.x - reach, first.width, grid.columns);
  const int right = index(point.x + reach, first.width, grid.columns);
  const int top = index(point.y - reach, first.height, grid.rows);
  const int bottom = index(point.y + reach, first.height, grid.rows);
  Numberings next;
  const auto add = [&](int cell) {
    const Numbering* best = nullptr;
    for (const Numbering& way : last) {
      if (way.cell <= cell && (!best || way.cost < best->cost)) best = &way;
    }
    if (!best) return;
    const float outside = distanceOutside(point, grid.cells[static_cast<std::size_t>(cell)].area);
    next.push_back({cell, best->cost + outside, static_cast<std::size_t>(best - last.data())});
  };
  for (int y = top; y <= bottom; ++y) {
    for (int x = left; x <= right; ++x) add(y * grid.columns + x);
  }
  if (next.empty()) add(last.front().cell);
  return next;
}

/// Detectors that work on reduced images place some points a little outside the cell they searched. But cells come one
/// after the other, so cell numbers never fall along the list: of all such numberings the one is taken whose points lie
/// least outside their cells.
void countInOrder(FeatureGrid& grid, const std::vector<cv::KeyPoint>& points) {
  std::vector<Numberings> ways = {{{0, 0.0f, 0}}};
  for (const cv::KeyPoint& point : points) ways.push_back(continued(ways.back(), point.pt, grid));
  const auto cheaper = [](const Numbering& a, const Numbering& b) { return a.cost < b.cost; };
  auto place =
      static_cast<std::size_t>(std::min_element(ways.back().begin(), ways.back().end(), cheaper) - ways.back().begin());
  for (std::size_t i = points.size(); i > 0; --i) {
    const Numbering& way = ways[i][place];
    ++grid.cells[static_cast<std::size_t>(way.cell)].found;
    place = way.before;
  }
}

}  // namespace

FeatureGrid countInCells(const FrameFeatures& features, const Settings& settings) {
  const bool fixedPoint = isFixedPoint(settings);
  const char* operation = fixedPoint ? "retrieveFeaturesFPGA" : "retrieveFeatures, detection in cells";
  const cv::Size image = features.frame.grey.size();
  FeatureGrid grid;
  grid.cellsPerSide = settings.integer("FBMnCells", operation);
  const std::int64_t budget = settings.integer("FBMnFeatures", operation);
  grid.quota = std::max<std::int64_t>(budget / grid.cellsPerSide / grid.cellsPerSide, 0);
  const std::vector<cv::KeyPoint> found = detectFeatures(features.frame, withoutQuotas(settings));
  grid.found = static_cast<int>(found.size());
  if (fixedPoint) {
    divideWhole(grid, image);
  } else {
    divideInPixels(grid, image);
  }
  if (grid.cells.empty()) return grid;
  if (fixedPoint) {
    countByPosition(grid, image, found, &GridCell::found);
    countByPosition(grid, image, features.selected, &GridCell::kept);
    return grid;
  }
  countInOrder(grid, found);
  for (GridCell& cell : grid.cells) cell.kept = static_cast<int>(std::min<std::int64_t>(cell.found, grid.quota));
  return grid;
}

}  // namespace mirel
