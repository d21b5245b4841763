#include "pictures/MeshPicture.h"

#include "meshes/OpenBorders.h"
#include "pictures/Drawing.h"
#include "pictures/Raster.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace mirel {

namespace {

using Eigen::Vector3d;
using Lines = std::vector<std::pair<Raster::Point, Raster::Point>>;

constexpr int panelWidth = 676, detailHeight = 360, gap = 16;
const cv::Vec3b borderRed(40, 30, 225), wire(70, 50, 35);

/// Where the viewer stands: rows are the directions right, down and toward the viewer.
///
/// Files do not say which axis is up. Things are taken to stand on their xz plane, as is usual in OBJ files; a flat one
/// (a relief, a piece of ground) is seen against its flat side, from somewhat below its y axis, so that z is up.
Eigen::Matrix3d viewpoint(const Vector3d& extent) {
  int thin = 0;
  extent.minCoeff(&thin);
  const double middle = extent.sum() - extent.minCoeff() - extent.maxCoeff();
  const bool flat = extent[thin] < 0.5 * middle;
  Vector3d toward(0.45, 0.35, 0.82), up = Vector3d::UnitY();
  if (flat && thin == 0) toward = {0.82, 0.35, 0.45};
  if (flat && thin == 1) toward = {0.35, 0.75, 0.56};
  if (flat && thin == 2) {
    toward = {0.3, -0.6, 0.74};
    up = Vector3d::UnitZ();
  }
  Eigen::Matrix3d axes;
  toward.normalize();
  const Vector3d right = up.cross(toward).normalized();
  axes << right.transpose(), right.cross(toward).transpose(), toward.transpose();
  return axes;
}

/// From the model to a panel.
struct View {
  Eigen::Matrix3d axes;
  Vector3d centre;
  double scale;  ///< pixels per unit
  cv::Size size;

  Raster::Point at(const Vector3d& point) const {
    return scale * (axes * (point - centre)) + Vector3d(size.width / 2.0, size.height / 2.0, 0);
  }

  Vector3d back(const Raster::Point& pixel) const {
    return centre + axes.transpose() * (pixel - Vector3d(size.width / 2.0, size.height / 2.0, 0)) / scale;
  }
};

/// The whole of a surface, in a panel that is as high as it needs.
View wholeView(const Surface& surface) {
  constexpr double filled = 0.9, least = 0.5, most = 0.95;  // of the panel; height over width
  const Eigen::AlignedBox3d box = surface.box();
  View view{viewpoint(box.sizes()), box.center(), 1, {}};
  Eigen::AlignedBox3d seen;
  for (const auto& triangle : surface.triangles) {
    for (const int number : triangle) seen.extend(view.at(surface.points[number]));
  }
  const Vector3d extent = seen.sizes();
  view.centre = view.back(seen.center());
  const double shape = extent.x() > 0 ? std::clamp(extent.y() / extent.x(), least, most) : most;
  view.size = {panelWidth, cvRound(panelWidth * shape)};
  view.scale = filled * std::min(view.size.width / extent.x(), view.size.height / extent.y());
  if (!std::isfinite(view.scale)) view.scale = 1;
  return view;
}

/// Side of the triangles if all were equal.
double meanEdge(const Surface& surface) {
  double area = 0;
  for (std::size_t i = 0; i < surface.triangles.size(); ++i) {
    const Vector3d& a = surface.corner(i, 0);
    area += (surface.corner(i, 1) - a).cross(surface.corner(i, 2) - a).norm() / 2;
  }
  return std::sqrt(area / static_cast<double>(surface.triangles.size()) * 4 / std::sqrt(3.0));
}

/// Where the surface is nearest to the middle, as large as it takes to see the triangles of both.
View detailView(const View& whole, const Vector3d& middle, double edgeBefore, double edgeAfter) {
  constexpr double shown = 30, least = 2, most = 200;  // pixels for a side of typical length; times the whole view
  View view = whole;
  view.size = {panelWidth, detailHeight};
  view.centre = middle;
  view.scale = std::clamp(shown / std::sqrt(edgeBefore * edgeAfter), least * whole.scale, most * whole.scale);
  if (!std::isfinite(view.scale)) view.scale = least * whole.scale;
  return view;
}

cv::Mat background(cv::Size size) {
  cv::Mat picture(size, CV_8UC3);
  for (int y = 0; y < size.height; ++y) {
    const double shade = static_cast<double>(y) / size.height;
    picture.row(y).setTo(cv::Scalar(252, 250, 248) - shade * cv::Scalar(22, 24, 26));
  }
  return picture;
}

/// Light from the upper left and a weaker one from the right, on both sides of a surface.
cv::Vec3b shade(const Vector3d& a, const Vector3d& b, const Vector3d& c) {
  static const Vector3d key = Vector3d(-0.45, -0.6, 0.66).normalized(), fill = Vector3d(0.8, 0.1, 0.6).normalized();
  Vector3d normal = (b - a).cross(c - a).normalized();
  if (normal.z() < 0) normal = -normal;
  const double light = 0.3 + 0.6 * std::max(0.0, normal.dot(key)) + 0.2 * std::max(0.0, normal.dot(fill));
  const cv::Vec3d clay(208, 221, 231);
  return clay * std::min(light, 1.1);
}

Lines triangleSides(const Surface& surface, const std::vector<Raster::Point>& points) {
  Lines lines;
  for (const auto& triangle : surface.triangles) {
    for (int i = 0; i < 3; ++i) lines.emplace_back(points[triangle[i]], points[triangle[(i + 1) % 3]]);
  }
  return lines;
}

Raster drawSurface(const Surface& surface, const View& view, bool sides, double edgeLength) {
  Raster raster(background(view.size));
  std::vector<Raster::Point> points;
  points.reserve(surface.points.size());
  for (const Vector3d& point : surface.points) points.push_back(view.at(point));
  for (const auto& [a, b, c] : surface.triangles) {
    raster.fill(points[a], points[b], points[c], shade(points[a], points[b], points[c]));
  }
  if (sides) {
    const double strength = std::clamp(edgeLength * view.scale / 20, 0.12, 0.75);  // short sides would be a dark area
    raster.drawLines(triangleSides(surface, points), 1.1, 1, wire, strength);
  }
  Lines borders;
  for (const auto& [from, to] : openBorders(surface)) borders.emplace_back(points[from], points[to]);
  raster.drawLines(borders, sides ? 3 : 2.2, 3, borderRed, 1);
  return raster;
}

/// The panel under a line of text.
cv::Mat captioned(const cv::Mat& panel, const std::string& text) {
  constexpr int band = 34;
  constexpr double height = 15;
  cv::Mat picture(panel.rows + band, panel.cols, CV_8UC3, paper);
  panel.copyTo(picture.rowRange(band, picture.rows));
  drawText(picture, fitText(text, height, panel.cols), {0, 24}, height, ink);
  return picture;
}

std::string grouped(std::size_t number) {
  std::string text = fmt::format("{}", number);
  for (int at = static_cast<int>(text.size()) - 3; at > 0; at -= 3) text.insert(static_cast<std::size_t>(at), 1, ' ');
  return text;
}

std::string sizeText(const char* when, const MeshSize& size) {
  const std::string borders = size.openEdges == 0 ? "no open edges" : grouped(size.openEdges) + " open edges";
  return fmt::format("{}: {} triangles, {}", when, grouped(size.triangles), borders);
}

/// Where the detail is in the whole.
void markDetail(cv::Mat& panel, const View& whole, const View& detail) {
  const Raster::Point middle = whole.at(detail.centre);
  const double half = whole.scale / detail.scale / 2;
  const cv::Point2d reach(half * detail.size.width, half * detail.size.height), at(middle.x(), middle.y());
  cv::rectangle(panel, cv::Rect(at - reach, at + reach), faintInk, 1, cv::LINE_AA);
}

cv::Mat tile(const std::vector<std::vector<cv::Mat>>& rows) {
  cv::Size size(0, -gap);
  for (const auto& row : rows) {
    size.width = std::max(size.width, static_cast<int>(row.size()) * (row[0].cols + gap) - gap);
    size.height += row[0].rows + gap;
  }
  cv::Mat picture(size, CV_8UC3, paper);
  int y = 0;
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      row[i].copyTo(picture(cv::Rect({static_cast<int>(i) * (row[i].cols + gap), y}, row[i].size())));
    }
    y += row[0].rows + gap;
  }
  return picture;
}

cv::Mat narrowed(const cv::Mat& panel) {
  constexpr double scale = 520.0 / panelWidth;
  cv::Mat small;
  cv::resize(panel, small, {}, scale, scale, cv::INTER_AREA);
  return small;
}

}  // namespace

MeshPicture drawMeshes(const Surface& before, const Surface& after, const MeshChange& change) {
  const View whole = wholeView(before);
  const double edgeBefore = meanEdge(before), edgeAfter = meanEdge(after);
  const Raster first = drawSurface(before, whole, false, edgeBefore);
  Raster::Point middle = whole.at(whole.centre);
  first.nearestToMiddle(middle);
  const View detail = detailView(whole, whole.back(middle), edgeBefore, edgeAfter);
  std::vector<cv::Mat> panels = {first.picture(), drawSurface(after, whole, false, edgeAfter).picture(),
                                 drawSurface(before, detail, true, edgeBefore).picture(),
                                 drawSurface(after, detail, true, edgeAfter).picture()};
  for (int i = 0; i < 2; ++i) markDetail(panels[i], whole, detail);
  std::vector<cv::Mat> small;
  const std::string texts[] = {sizeText("before", change.before), sizeText("after", change.after),
                               "before: triangles in the frame", "after: triangles in the frame"};
  for (std::size_t i = 0; i < panels.size(); ++i) {
    small.push_back(captioned(narrowed(panels[i]), texts[i]));
    panels[i] = captioned(panels[i], texts[i]);
  }
  const SurfaceDistance distance = change.distance.both();
  Sheet sheet(tile({{panels[0], panels[1]}, {panels[2], panels[3]}}),
              {change.in, fmt::format("distance between the surfaces: mean {:.3g}, largest {:.3g}; diagonal {:.4g}; "
                                      "red: open borders",
                                      distance.mean, distance.largest, change.before.diagonal)},
              0);
  return {sheet.picture(), tile({{small[0]}, {small[1]}, {small[2]}, {small[3]}})};
}

}  // namespace mirel
