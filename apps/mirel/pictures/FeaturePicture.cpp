#include "pictures/FeaturePicture.h"

#include "pictures/ColourBar.h"
#include "pictures/Drawing.h"

#include <fmt/format.h>

#include <opencv2/imgproc.hpp>

namespace mirel {

namespace {

constexpr int frameWidth = 1280;
const cv::Scalar gridColour(255, 255, 255);

void drawGrid(cv::Mat& view, const FrameFeatures& features, int cells) {
  const std::vector<int> counts = countPerCell(features.keyPoints, features.frame.grey.size(), cells);
  const auto edge = [&](int cell, int length) {
    return static_cast<int>(static_cast<long long>(cell) * length / cells);
  };
  for (int i = 1; i < cells; ++i) {
    cv::line(view, {edge(i, view.cols), 0}, {edge(i, view.cols), view.rows}, gridColour, 1);
    cv::line(view, {0, edge(i, view.rows)}, {view.cols, edge(i, view.rows)}, gridColour, 1);
  }
  constexpr double height = 12;
  for (int i = 0; i < cells * cells; ++i) {
    const std::string count = fmt::format("{}", counts[i]);
    const cv::Point corner(edge(i % cells, view.cols), edge(i / cells, view.rows));
    const cv::Size box(textWidth(count, height) + 10, static_cast<int>(height) + 9);
    if (box.width * cells > view.cols || box.height * cells > view.rows) return;  // no room for numbers
    cv::rectangle(view, {corner, box}, ink, cv::FILLED);
    drawText(view, count, corner + cv::Point(5, static_cast<int>(height) + 4), height, paper);
  }
}

std::vector<std::string> headings(const FrameFeatures& features) {
  const cv::Size size = features.frame.grey.size();
  return {features.frame.name, fmt::format("{} features, {} x {} pixels; circles as wide as the features, numbers: "
                                           "features in the cell",
                                           features.keyPoints.size(), size.width, size.height)};
}

}  // namespace

cv::Mat drawFeatures(const FrameFeatures& features, int cells) {
  const double scale = viewScale(features.frame.grey.size(), frameWidth);
  cv::Mat view = viewOf(features.frame.grey, scale, 0.85);
  std::vector<double> responses;
  for (const cv::KeyPoint& point : features.keyPoints) responses.push_back(point.response);
  const ColourScale colours(responses, true);
  cv::Mat circles = view.clone();
  const std::vector<cv::KeyPoint> weakestFirst(features.keyPoints.rbegin(), features.keyPoints.rend());
  for (const cv::KeyPoint& point : weakestFirst) {
    const double radius = std::max(3.0, point.size / 2 * scale);
    drawCircle(circles, viewPoint(point.pt, scale), radius, colours.colour(point.response), 1);
  }
  cv::addWeighted(circles, 0.6, view, 0.4, 0, view);
  for (const cv::KeyPoint& point : weakestFirst) {
    drawDot(view, viewPoint(point.pt, scale), 2, colours.colour(point.response));
  }
  if (cells > 0) drawGrid(view, features, cells);
  Sheet sheet(view, headings(features));
  colours.drawBar(sheet.picture(), sheet.footer(), "response");
  return sheet.picture();
}

}  // namespace mirel
