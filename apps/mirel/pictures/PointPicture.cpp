#include "pictures/PointPicture.h"

#include "pictures/Drawing.h"
#include "pictures/TimePlot.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace mirel {

namespace {

constexpr int leftMargin = 62, rightMargin = 16, topMargin = 26, axisSpace = 56, legendStep = 24;
constexpr double textHeight = 12;
const cv::Scalar cellLines(222, 218, 214);

/// Colours that are told apart with colour-blind eyes too (Okabe and Ito, "Color universal design", 2008).
cv::Scalar colourOf(Fate fate) {
  switch (fate) {
    case Fate::kept:
      return {178, 114, 0};
    case Fate::wideCell:
    case Fate::offMedian:
      return {0, 94, 213};
    case Fate::unevenCell:
      return {167, 121, 204};
    case Fate::aboveMean:
      return {0, 159, 230};
    case Fate::alternate:
    case Fate::betweenSteps:
      return {233, 180, 86};
    case Fate::unexplained:
      return signal;
    default:
      return {160, 155, 150};
  }
}

/// From positions in the image to the picture. y grows downward in both.
struct Plot {
  cv::Rect area;
  double left, right, top, bottom;  ///< what the area shows

  Plot(const cv::Mat& points, int width) {
    cv::minMaxLoc(points.col(0), &left, &right);
    cv::minMaxLoc(points.col(1), &top, &bottom);
    widen(left, right);
    widen(top, bottom);
    const double shape = std::clamp((bottom - top) / (right - left), 0.3, 1.2);
    area = {leftMargin, topMargin, width - leftMargin - rightMargin, 0};
    area.height = cvRound(area.width * shape);
  }

  cv::Point2f at(double x, double y) const {
    return {static_cast<float>(area.x + (x - left) / (right - left) * area.width),
            static_cast<float>(area.y + (y - top) / (bottom - top) * area.height)};
  }

 private:
  /// A border around all points, also where they have one coordinate.
  static void widen(double& low, double& high) {
    const double border =
        high > low ? 0.02 * (high - low) : std::max(1.0, 1e-3 * std::max(std::abs(low), std::abs(high)));
    low -= border;
    high += border;
  }
};

/// Whether the cells are large enough to be seen; their lines are drawn if so.
bool drawCells(cv::Mat& picture, const Plot& plot, const CellGrid& grid) {
  constexpr double least = 3;
  const double across = grid.width / (plot.right - plot.left) * plot.area.width;
  const double down = grid.height / (plot.bottom - plot.top) * plot.area.height;
  if (!grid.isThere() || across < least || down < least) return false;
  for (double x = grid.x; x <= plot.right; x += grid.width) {
    drawLine(picture, plot.at(x, plot.top), plot.at(x, plot.bottom), cellLines, 1);
  }
  for (double y = grid.y; y <= plot.bottom; y += grid.height) {
    drawLine(picture, plot.at(plot.left, y), plot.at(plot.right, y), cellLines, 1);
  }
  return true;
}

void drawAxes(cv::Mat& picture, const Plot& plot) {
  const cv::Rect& area = plot.area;
  const Ticks across(plot.left, plot.right, std::max(3, area.width / 100));
  const Ticks down(plot.top, plot.bottom, std::max(2, area.height / 60));
  const auto bottom = static_cast<float>(area.br().y), left = static_cast<float>(area.x);
  for (const double tick : across.values) {
    const std::string text = across.text(tick);
    const float x = plot.at(tick, 0).x;
    drawLine(picture, {x, bottom}, {x, bottom + 5}, faintInk, 1);
    drawText(picture, text, {cvRound(x) - textWidth(text, textHeight) / 2, area.br().y + 21}, textHeight, faintInk);
  }
  for (const double tick : down.values) {
    const std::string text = down.text(tick);
    const float y = plot.at(0, tick).y;
    drawLine(picture, {left - 5, y}, {left, y}, faintInk, 1);
    drawText(picture, text, {area.x - 8 - textWidth(text, textHeight), cvRound(y) + 5}, textHeight, faintInk);
  }
  cv::rectangle(picture, area, faintInk);
  drawText(picture, "y, px", {4, area.y - 8}, textHeight, ink);
  drawText(picture, "x, px", {area.br().x - textWidth("x, px", textHeight), area.br().y + 40}, textHeight, ink);
}

/// Dropped points first, so that kept ones are never hidden.
void drawDots(cv::Mat& picture, const Plot& plot, const PointChoice& choice) {
  const double each = static_cast<double>(plot.area.area()) / static_cast<double>(choice.fates.size());
  const double radius = std::clamp(0.22 * std::sqrt(each), 0.8, 3.5);
  const auto draw = [&](std::size_t row) {
    const int i = static_cast<int>(row);
    const cv::Point2f at = plot.at(choice.run.points.at<float>(i, 0), choice.run.points.at<float>(i, 1));
    const cv::Scalar colour = colourOf(choice.fates[row]);
    if (radius > 1) drawCircle(picture, at, radius, colour, cv::FILLED);
    if (radius <= 1) cv::rectangle(picture, cv::Rect(cv::Point(at), cv::Size(2, 2)), colour, cv::FILLED);
  };
  for (std::size_t row = 0; row < choice.fates.size(); ++row) {
    if (choice.fates[row] != Fate::kept) draw(row);
  }
  for (const int row : choice.run.kept) draw(static_cast<std::size_t>(row));
}

struct LegendEntry {
  std::string text;
  cv::Scalar colour;
  cv::Point corner;
};

/// Entries side by side as far as there is room, then below each other.
std::vector<LegendEntry> legend(const PointChoice& choice, int width) {
  constexpr int dot = 18, gap = 22;
  std::vector<LegendEntry> entries;
  cv::Point corner(leftMargin, 0);
  const auto add = [&](Fate fate) {
    const std::int64_t rows = choice.count(fate);
    if (rows == 0 && fate != Fate::kept) return;
    const std::string text = fmt::format("{}: {}", nameOf(fate).text, rows);
    const int needed = dot + textWidth(text, textHeight);
    if (corner.x > leftMargin && corner.x + needed > width - rightMargin) {
      corner = {leftMargin, corner.y + legendStep};
    }
    entries.push_back({text, colourOf(fate), corner});
    corner.x += needed + gap;
  };
  add(Fate::kept);
  for (const Fate reason : choice.reasons()) add(reason);
  return entries;
}

cv::Mat drawPlot(const PointChoice& choice, int width, bool& cellsShown) {
  const Plot plot(choice.run.points, width);
  const std::vector<LegendEntry> entries = legend(choice, width);
  const int legendTop = plot.area.br().y + axisSpace;
  cv::Mat picture(legendTop + entries.back().corner.y + legendStep + 6, width, CV_8UC3, paper);
  cellsShown = choice.run.hasGrid() && drawCells(picture, plot, gridOver(choice.run.points, choice.run.mostPoints));
  drawDots(picture, plot, choice);
  drawAxes(picture, plot);
  for (const auto& [text, colour, corner] : entries) {
    const cv::Point at = corner + cv::Point(0, legendTop);
    drawCircle(picture, cv::Point2f(at) + cv::Point2f(5, 10), 5, colour, cv::FILLED);
    drawText(picture, text, at + cv::Point(18, 15), textHeight, ink);
  }
  return picture;
}

}  // namespace

PointPicture drawPoints(const PointChoice& choice) {
  constexpr int width = 1280, narrowWidth = 520;
  bool cellsShown = false, ignored = false;
  const cv::Mat plot = drawPlot(choice, width, cellsShown);
  std::string cells;
  if (choice.run.hasGrid()) cells = cellsShown ? "; lines: cells of the grid" : "; the cells are too small to be drawn";
  Sheet sheet(plot,
              {choice.table,
               fmt::format("{} points in, {} kept; {}", choice.fates.size(), choice.run.kept.size(), choice.method()),
               "kept points lie over dropped ones" + cells},
              0);
  return {sheet.picture(), drawPlot(choice, narrowWidth, ignored)};
}

}  // namespace mirel
