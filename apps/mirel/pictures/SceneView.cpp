#include "pictures/SceneView.h"

#include "pictures/Drawing.h"
#include "pictures/TimePlot.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace mirel {

namespace {

constexpr int width = 1080, leftMargin = 96, rightMargin = 16, titleSpace = 30, axisSpace = 52, border = 28;
constexpr int plotWidth = width - leftMargin - rightMargin, leastHeight = 130, mostHeight = 620;
constexpr double textHeight = 12;
const cv::Scalar gridColour(230, 227, 224);

cv::Rect areaBelow(int top, double extent, double scale) {
  const int height = std::clamp(cvCeil(extent * scale) + 2 * border, leastHeight, mostHeight);
  return {leftMargin, top + titleSpace, plotWidth, height};
}

/// From the middle of a square with sides of 2 to its border.
cv::Point2d directionTo(double angle) {
  const double x = std::cos(angle), y = std::sin(angle);
  return cv::Point2d(x, y) / std::max(std::abs(x), std::abs(y));
}

}  // namespace

SceneView::SceneView(const std::vector<cv::Point3d>& shown) {
  cv::Point3d low = shown.front(), high = low;
  for (const cv::Point3d& p : shown) {
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
  }
  const cv::Point3d extent = high - low;
  const double size = std::max(
      {std::abs(low.x), std::abs(low.y), std::abs(low.z), std::abs(high.x), std::abs(high.y), std::abs(high.z)});
  const double least = size > 0 ? 1e-6 * size : 1;  // a scene that is a point
  scale_ = std::min((plotWidth - 2 * border) / std::max(extent.x, least),
                    (mostHeight - 2 * border) / std::max({extent.y, extent.z, least}));
  centre_ = (low + high) / 2;
  areas_[above] = areaBelow(0, extent.y, scale_);
  areas_[side] = areaBelow(areas_[above].br().y + axisSpace, extent.z, scale_);
  picture_ = cv::Mat(areas_[side].br().y + axisSpace, width, CV_8UC3, paper);
  for (const Side plot : sides) drawAxes(plot);
}

cv::Point2f SceneView::at(Side plot, const cv::Point3d& point) const {
  const cv::Rect& area = areas_[plot];
  const cv::Point3d p = (point - centre_) * scale_;
  return {static_cast<float>(area.x + area.width / 2.0 + p.x),
          static_cast<float>(area.y + area.height / 2.0 - (plot == above ? p.y : p.z))};
}

void SceneView::drawAxes(Side plot) {
  const cv::Rect& area = areas_[plot];
  const double halfWidth = area.width / scale_ / 2, halfHeight = area.height / scale_ / 2;
  const double middle = plot == above ? centre_.y : centre_.z;
  const Ticks across(centre_.x - halfWidth, centre_.x + halfWidth, 10);
  const Ticks up(middle - halfHeight, middle + halfHeight, std::max(2, area.height / 45));
  const auto left = static_cast<float>(area.x), right = static_cast<float>(area.br().x);
  const auto top = static_cast<float>(area.y), bottom = static_cast<float>(area.br().y);
  for (const double tick : across.values) {
    const float x = at(plot, {tick, 0, 0}).x;
    const std::string text = across.text(tick);
    drawLine(picture_, {x, top}, {x, bottom}, gridColour, 1);
    drawText(picture_, text, {cvRound(x) - textWidth(text, textHeight) / 2, area.br().y + 19}, textHeight, faintInk);
  }
  for (const double tick : up.values) {
    const float y = at(plot, {0, tick, tick}).y;
    const std::string text = up.text(tick);
    drawLine(picture_, {left, y}, {right, y}, gridColour, 1);
    drawText(picture_, text, {area.x - 10 - textWidth(text, textHeight), cvRound(y) + 5}, textHeight, faintInk);
  }
  cv::rectangle(picture_, area, faintInk);
  drawText(picture_, plot == above ? "From above: y, m" : "From the side: z, m", {area.x, area.y - 10}, textHeight,
           ink);
  const std::string x = "x, m";
  drawText(picture_, x, {area.x + (area.width - textWidth(x, textHeight)) / 2, area.br().y + 40}, textHeight, ink);
}

void fillConvex(cv::Mat& picture, const std::vector<cv::Point2f>& points, const cv::Scalar& colour, double strength) {
  std::vector<cv::Point2f> hull;
  cv::convexHull(points, hull);
  std::vector<cv::Point> corners(hull.begin(), hull.end());
  const cv::Rect box = (cv::boundingRect(corners) + cv::Size(1, 1)) & cv::Rect({}, picture.size());
  if (box.empty()) return;
  for (cv::Point& corner : corners) corner -= box.tl();
  cv::Mat part = picture(box), filled = part.clone();
  cv::fillConvexPoly(filled, corners, colour, cv::LINE_AA);
  cv::addWeighted(filled, strength, part, 1 - strength, 0, part);
}

void Labels::add(const std::string& text, cv::Point2f point, cv::Point2f away, const cv::Scalar& colour) {
  constexpr int padding = 3, distance = 7, gap = 8;
  const cv::Size size(textWidth(text, textHeight) + 2 * padding, static_cast<int>(textHeight) + 2 * padding);
  const double preferred = std::atan2(away.y, away.x);
  for (const int eighth : {0, 1, -1, 2, -2, 3, -3, 4}) {
    const cv::Point2d way = directionTo(preferred + eighth * CV_PI / 4);
    const cv::Point centre(cvRound(point.x + way.x * (distance + size.width / 2.0)),
                           cvRound(point.y + way.y * (distance + size.height / 2.0)));
    const cv::Rect box(centre - cv::Point(size.width / 2, size.height / 2), size);
    const bool inside = (box & area_) == box;
    const bool isFree =
        std::none_of(taken_.begin(), taken_.end(), [&](const cv::Rect& r) { return !(r & box).empty(); });
    if (!inside || !isFree) continue;
    taken_.push_back(box + cv::Size(2 * gap, 0) - cv::Point(gap, 0));
    cv::Mat background = picture_(box);
    cv::addWeighted(background, 0.3, cv::Mat(box.size(), CV_8UC3, paper), 0.7, 0, background);
    drawText(picture_, text, {box.x + padding, box.br().y - padding}, textHeight, colour);
    return;
  }
}

}  // namespace mirel
