#include "pictures/FeaturePicture.h"

#include "pictures/ColourBar.h"
#include "pictures/Drawing.h"

#include <fmt/format.h>

#include <algorithm>
#include <opencv2/imgproc.hpp>

namespace mirel {

namespace {

constexpr int frameWidth = 1280;
const cv::Scalar gridColour(255, 255, 255), noDescriptor(150, 150, 150), noCell(90, 60, 150);

/// The cell in the enlarged or reduced image, cut at its edges.
cv::Rect viewRect(const cv::Rect2f& area, double scale, const cv::Mat& view) {
  const auto at = [=](float edge) { return cvRound((edge + 0.5) * scale); };
  const cv::Point corner(at(area.x), at(area.y)), end(at(area.br().x), at(area.br().y));
  return cv::Rect(corner, end) & cv::Rect({}, view.size());
}

void shade(cv::Mat view, const cv::Scalar& colour) {
  cv::addWeighted(view, 0.45, cv::Mat(view.size(), view.type(), colour), 0.55, 0, view);
}

/// Shades the columns and rows behind the last cell.
void shadeLeftovers(cv::Mat& view, const cv::Rect& lastCell) {
  const cv::Point end = lastCell.br();
  if (end.x < view.cols) shade(view.colRange(end.x, view.cols), noCell);
  if (end.y < view.rows) shade(view(cv::Rect(0, end.y, end.x, view.rows - end.y)), noCell);
}

/// How much of the numbers has room in the cells.
enum class CellText { none, kept, all };

std::vector<std::string> cellLines(const GridCell& cell, std::int64_t quota, CellText text) {
  if (text == CellText::none) return {};
  if (text == CellText::kept) return {fmt::format("{}", cell.kept)};
  return {fmt::format("{} / {}", cell.kept, quota), fmt::format("of {}", cell.found)};
}

constexpr double textHeight = 12;
constexpr int lineStep = static_cast<int>(textHeight) + 6, padding = 5;

cv::Size boxSize(const std::vector<std::string>& lines) {
  int width = 0;
  for (const std::string& line : lines) width = std::max(width, textWidth(line, textHeight));
  return {width + 2 * padding, static_cast<int>(lines.size()) * lineStep + padding};
}

CellText roomFor(const FeatureGrid& grid, cv::Size cellInView) {
  for (const CellText text : {CellText::all, CellText::kept}) {
    const bool fits = std::all_of(grid.cells.begin(), grid.cells.end(), [&](const GridCell& cell) {
      const cv::Size box = boxSize(cellLines(cell, grid.quota, text));
      return box.width < cellInView.width && box.height < cellInView.height;
    });
    if (fits) return text;
  }
  return CellText::none;
}

void writeLines(cv::Mat& view, const std::vector<std::string>& lines, cv::Point corner) {
  if (lines.empty()) return;
  cv::rectangle(view, {corner, boxSize(lines)}, ink, cv::FILLED);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const cv::Point baseline = corner + cv::Point(padding, static_cast<int>(i + 1) * lineStep - 2);
    drawText(view, lines[i], baseline, textHeight, paper);
  }
}

/// Lines, numbers and shading; returns which numbers there are.
CellText drawGrid(cv::Mat& view, const FeatureGrid& grid, double scale) {
  if (grid.cells.empty()) return CellText::none;
  const CellText text = roomFor(grid, viewRect(grid.cells.front().area, scale, view).size());
  shadeLeftovers(view, viewRect(grid.cells.back().area, scale, view));
  for (const GridCell& cell : grid.cells) {
    const cv::Rect area = viewRect(cell.area, scale, view);
    if (area.x > 0) cv::line(view, area.tl(), {area.x, area.br().y - 1}, gridColour, 1);
    if (area.y > 0) cv::line(view, area.tl(), {area.br().x - 1, area.y}, gridColour, 1);
    writeLines(view, cellLines(cell, grid.quota, text), area.tl());
  }
  return text;
}

std::string legend(CellText text, bool dropped, bool leftovers) {
  std::string legend = "circles: width of the features";
  if (dropped) legend += ", grey: no descriptor";
  if (text == CellText::all) legend += "; cells: kept / quota, of so many found";
  if (text == CellText::kept) legend += "; cells: features kept";
  if (leftovers) legend += "; shaded: in no cell";
  return legend;
}

void drawCircles(cv::Mat& view, const FrameFeatures& features, const ColourScale& colours, double scale) {
  cv::Mat circles = view.clone();
  const auto circle = [&](const cv::KeyPoint& point, const cv::Scalar& colour) {
    drawCircle(circles, viewPoint(point.pt, scale), std::max(3.0, point.size / 2 * scale), colour, 1);
  };
  const std::vector<cv::KeyPoint> weakestFirst(features.keyPoints.rbegin(), features.keyPoints.rend());
  for (const cv::KeyPoint& point : features.selected) circle(point, noDescriptor);
  for (const cv::KeyPoint& point : weakestFirst) circle(point, colours.colour(point.response));
  cv::addWeighted(circles, 0.6, view, 0.4, 0, view);
  for (const cv::KeyPoint& point : features.selected) drawDot(view, viewPoint(point.pt, scale), 2, noDescriptor);
  for (const cv::KeyPoint& point : weakestFirst) {
    drawDot(view, viewPoint(point.pt, scale), 2, colours.colour(point.response));
  }
}

}  // namespace

cv::Mat drawFeatures(const FrameFeatures& features, const FeatureGrid& grid) {
  const cv::Size size = features.frame.grey.size();
  const double scale = viewScale(size, frameWidth);
  cv::Mat view = viewOf(features.frame.grey, scale, 0.85);
  std::vector<double> responses;
  for (const cv::KeyPoint& point : features.keyPoints) responses.push_back(point.response);
  const ColourScale colours(responses, true);
  drawCircles(view, features, colours, scale);
  const CellText text = drawGrid(view, grid, scale);

  const bool dropped = features.keyPoints.size() < features.selected.size();
  const bool leftovers =
      !grid.cells.empty() && viewRect(grid.cells.back().area, scale, view).br() != cv::Point(view.cols, view.rows);
  Sheet sheet(view,
              {features.frame.name,
               fmt::format("{} x {} pixels; {} features found, {} kept by the quotas, {} by the descriptor", size.width,
                           size.height, grid.found, features.selected.size(), features.keyPoints.size()),
               legend(text, dropped, leftovers)});
  colours.drawBar(sheet.picture(), sheet.footer(), "response");
  return sheet.picture();
}

}  // namespace mirel
