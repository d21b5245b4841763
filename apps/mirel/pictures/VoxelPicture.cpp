#include "pictures/VoxelPicture.h"

#include "pictures/ColourBar.h"
#include "pictures/Drawing.h"
#include "pictures/SceneView.h"

#include <fmt/format.h>

#include <algorithm>
#include <opencv2/imgproc.hpp>

namespace mirel {

namespace {

const cv::Scalar noScore(205, 205, 205);

std::vector<cv::Point3d> shownPoints(const SeenVoxels& result) {
  const double half = result.voxelSize / 2;
  std::vector<cv::Point3d> shown;
  for (const NamedPose& pose : result.poses) shown.push_back(pose.position());
  for (const SeenVoxel& v : result.voxels) {
    shown.push_back(v.centre - cv::Point3d(half, half, half));
    shown.push_back(v.centre + cv::Point3d(half, half, half));
  }
  return shown;
}

cv::Rect squareOf(const SceneView& scene, SceneView::Side plot, const SeenVoxel& v, double voxelSize) {
  const double half = voxelSize / 2;
  const cv::Point2f low = scene.at(plot, v.centre - cv::Point3d(half, half, half));
  const cv::Point2f high = scene.at(plot, v.centre + cv::Point3d(half, half, half));
  const cv::Point corner(cvRound(low.x), cvRound(high.y)), end(cvRound(high.x), cvRound(low.y));
  return {corner, cv::Size(std::max(3, end.x - corner.x), std::max(3, end.y - corner.y))};
}

void drawPoses(SceneView& scene, SceneView::Side plot, const SeenVoxels& result) {
  for (std::size_t i = 0; i < result.poses.size(); ++i) {
    const cv::Point2f at = scene.at(plot, result.poses[i].position());
    if (i > 0) drawLine(scene.picture(), scene.at(plot, result.poses[i - 1].position()), at, noScore, 1);
    drawCircle(scene.picture(), at, 2.5, faintInk, cv::FILLED);
  }
}

void drawSquares(SceneView& scene, SceneView::Side plot, const SeenVoxels& result, const ColourScale& colours) {
  for (auto v = result.voxels.rbegin(); v != result.voxels.rend(); ++v) {
    const cv::Rect square = squareOf(scene, plot, *v, result.voxelSize);
    cv::rectangle(scene.picture(), square, v->score > 0 ? colours.colour(v->score) : noScore, cv::FILLED);
    if (square.width > 6) cv::rectangle(scene.picture(), square, paper);
  }
}

void markRegions(SceneView& scene, SceneView::Side plot, const SeenVoxels& result) {
  Labels labels(scene.picture(), scene.area(plot));
  std::vector<cv::Rect> frames;
  for (const SeenVoxel& region : result.regions) {
    frames.push_back(squareOf(scene, plot, region, result.voxelSize) + cv::Size(6, 6) - cv::Point(3, 3));
    labels.keepFree(frames.back());
  }
  for (std::size_t i = frames.size(); i-- > 0;) {
    cv::rectangle(scene.picture(), frames[i], i == 0 ? signal : ink, i == 0 ? 3 : 2);
  }
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const cv::Point2f corner(static_cast<float>(frames[i].br().x), static_cast<float>(frames[i].y));
    labels.add(i == 0 ? "1: best" : fmt::format("{}", i + 1), corner, {1, -1}, ink);
  }
}

}  // namespace

cv::Mat drawVoxels(const SeenVoxels& result) {
  std::vector<double> scores;
  for (const SeenVoxel& v : result.voxels) {
    if (v.score > 0) scores.push_back(v.score);
  }
  const ColourScale colours(scores, true);
  SceneView scene(shownPoints(result));
  for (const SceneView::Side plot : SceneView::sides) {
    drawPoses(scene, plot, result);
    drawSquares(scene, plot, result, colours);
    markRegions(scene, plot, result);
  }
  Sheet sheet(scene.picture(),
              {result.pointsFile,
               fmt::format("{} voxels of {:g} m kept, {} with a score; the higher score is in front",
                           result.voxels.size(), result.voxelSize, scores.size()),
               "light grey: score 0; dots: positions of the poses; frames: best voxels of the best regions"});
  colours.drawBar(sheet.picture(), sheet.footer(), "score");
  return sheet.picture();
}

}  // namespace mirel
