#include "pictures/FrustumPicture.h"

#include "pictures/Drawing.h"
#include "pictures/SceneView.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace mirel {

namespace {

using Corners = std::array<cv::Point3d, 4>;

struct Pyramid {
  cv::Point3d apex;
  Corners nearest, farthest;
};

Corners cornersAt(const VoskBase::Mat4d& pose, double distance, double slope) {
  const double side = slope * distance;
  return {toWorld(pose, {-side, -side, -distance}), toWorld(pose, {side, -side, -distance}),
          toWorld(pose, {side, side, -distance}), toWorld(pose, {-side, side, -distance})};
}

/// Pyramids that reach much farther than the cameras are apart, or that are many, would hide them: these are cut.
double drawnDepth(const ViewOverlaps& result) {
  double extent = 0;
  const cv::Point3d first = result.views.front().position();
  for (const NamedPose& view : result.views) extent = std::max(extent, cv::norm(view.position() - first));
  const double part = std::min(1.25, 25.0 / static_cast<double>(result.views.size()));
  const double enough = std::max(part * extent, 2 * result.range.nearest);
  return extent > 0 ? std::min(result.range.farthest, enough) : result.range.farthest;
}

/// Neighbours in the list get hues far apart (steps of the golden ratio).
cv::Scalar colourOf(std::size_t index) {
  const double hue = std::fmod(0.58 + 0.618034 * static_cast<double>(index), 1.0);
  const cv::Mat3b hsv(1, 1, cv::Vec3b(cv::saturate_cast<uchar>(hue * 179), 205, 190));
  cv::Mat3b bgr;
  cv::cvtColor(hsv, bgr, cv::COLOR_HSV2BGR);
  const cv::Vec3b c = bgr(0, 0);
  return {static_cast<double>(c[0]), static_cast<double>(c[1]), static_cast<double>(c[2])};
}

class Painter {
 public:
  Painter(SceneView& scene, SceneView::Side plot, const ViewOverlaps& result, const std::vector<Pyramid>& pyramids,
          bool cut)
      : scene_(scene), plot_(plot), result_(result), pyramids_(pyramids), cut_(cut) {}

  void draw() {
    const double strength = std::clamp(0.9 / static_cast<double>(pyramids_.size()), 0.015, 0.14);
    for (std::size_t i = 0; i < pyramids_.size(); ++i) {
      const Pyramid& p = pyramids_[i];
      std::vector<cv::Point2f> points = {at(p.apex)};
      for (const cv::Point3d& corner : p.farthest) points.push_back(at(corner));
      fillConvex(scene_.picture(), points, colourOf(i), strength);
    }
    for (std::size_t i = 0; i < pyramids_.size(); ++i) drawEdges(pyramids_[i], colourOf(i));
    drawLinks();
    for (std::size_t i = 0; i < pyramids_.size(); ++i) {
      drawDot(scene_.picture(), at(pyramids_[i].apex), pyramids_.size() > 60 ? 3 : 5, colourOf(i));
    }
    drawNames();
  }

 private:
  cv::Point2f at(const cv::Point3d& point) const { return scene_.at(plot_, point); }

  void drawEdges(const Pyramid& p, const cv::Scalar& colour) {
    for (std::size_t k = 0; k < 4; ++k) {
      const std::size_t next = (k + 1) % 4;
      drawLine(scene_.picture(), at(p.apex), at(p.farthest[k]), colour, 1);
      drawLine(scene_.picture(), at(p.nearest[k]), at(p.nearest[next]), colour, 1);
      if (!cut_) drawLine(scene_.picture(), at(p.farthest[k]), at(p.farthest[next]), colour, 1);
    }
  }

  void drawLinks() {
    cv::Mat linked = scene_.picture().clone();
    for (std::size_t i = 0; i < pyramids_.size(); ++i) {
      for (std::size_t j = i + 1; j < pyramids_.size(); ++j) {
        if (result_.overlaps[i][j] != 0) drawLine(linked, at(pyramids_[i].apex), at(pyramids_[j].apex), ink, 1);
      }
    }
    const double strength = result_.overlappingPairs > 400 ? 0.2 : 0.55;
    cv::addWeighted(linked, strength, scene_.picture(), 1 - strength, 0, scene_.picture());
  }

  void drawNames() {
    constexpr int widest = 110;
    Labels labels(scene_.picture(), scene_.area(plot_));
    for (const Pyramid& p : pyramids_) labels.keepFree({cv::Point(at(p.apex)) - cv::Point(4, 4), cv::Size(9, 9)});
    for (std::size_t i = 0; i < pyramids_.size(); ++i) {
      const Pyramid& p = pyramids_[i];
      const cv::Point2f apex = at(p.apex), ahead = at((p.farthest[0] + p.farthest[2]) / 2);
      labels.add(fitText(result_.views[i].name, 12, widest), apex, apex - ahead, ink);
    }
  }

  SceneView& scene_;
  SceneView::Side plot_;
  const ViewOverlaps& result_;
  const std::vector<Pyramid>& pyramids_;
  bool cut_;
};

}  // namespace

cv::Mat drawViews(const ViewOverlaps& result) {
  const ViewRange& range = result.range;
  const double depth = drawnDepth(result), slope = 2 * std::sin(range.fov() / 2);
  std::vector<Pyramid> pyramids;
  std::vector<cv::Point3d> shown;
  for (const NamedPose& view : result.views) {
    const VoskBase::Mat4d pose = overlapPose(view, range.look);
    pyramids.push_back(
        {view.position(), cornersAt(pose, std::min(range.nearest, depth), slope), cornersAt(pose, depth, slope)});
    shown.push_back(view.position());
    shown.insert(shown.end(), pyramids.back().farthest.begin(), pyramids.back().farthest.end());
  }
  SceneView scene(shown);
  const bool cut = depth < range.farthest;
  for (const SceneView::Side plot : SceneView::sides) Painter(scene, plot, result, pyramids, cut).draw();
  return Sheet(scene.picture(),
               {result.file,
                fmt::format("{} of {} pairs of views overlap: dark lines join their positions", result.overlappingPairs,
                            result.pairs),
                fmt::format("pyramids from {:g} to {:g} m{}, looking along {}; sides rise by 2 sin({:g} deg) per metre",
                            range.nearest, range.farthest, cut ? fmt::format(", drawn to {:.3g} m", depth) : "",
                            range.look == Look::alongPlusZ ? "+z" : "-z", range.fovDegrees / 2)})
      .picture();
}

}  // namespace mirel
