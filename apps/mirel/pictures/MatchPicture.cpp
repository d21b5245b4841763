#include "pictures/MatchPicture.h"

#include "pictures/ColourBar.h"
#include "pictures/Drawing.h"

#include <fmt/format.h>

#include <cmath>
#include <opencv2/core.hpp>

namespace mirel {

namespace {

constexpr int gap = 8, frameWidth = 780;

/// The lines are shown through in part where there are many.
double opacity(std::size_t lines) { return lines <= 60 ? 1 : lines <= 250 ? 0.75 : 0.5; }

std::vector<double> distances(const PairResult& pair) {
  std::vector<double> values;
  for (const PairMatch& match : pair.matches) values.push_back(match.match.distance);
  return values;
}

void drawSearchCircles(cv::Mat& frame, const PairResult& pair, double scale) {
  constexpr std::size_t most = 25;
  const std::size_t step = std::max<std::size_t>(1, pair.matches.size() / most);
  for (std::size_t i = 0; i < pair.matches.size(); i += step) {
    const PairMatch& match = pair.matches[i];
    if (match.searchRadius > 2 * std::max(frame.cols, frame.rows) / scale) continue;
    const cv::Point2f centre = viewPoint({match.match.predictedX, match.match.predictedY}, scale);
    drawCircle(frame, centre, match.searchRadius * scale, {255, 255, 255}, 1);
    drawLine(frame, centre, viewPoint(match.to, scale), {255, 255, 255}, 1);
  }
}

std::vector<std::string> headings(const PairResult& pair) {
  return {fmt::format("{}  ->  {}", pair.nameFrom, pair.nameTo),
          fmt::format("{} matches of {} and {} features, {} inliers, motion {}", pair.matchCount, pair.counts.features1,
                      pair.counts.features2, pair.inliers, describeMotion(pair.motion))};
}

}  // namespace

std::string describeMotion(const ImageMotion& motion) {
  if (!motion.valid) return "none found";
  return fmt::format("{:.2f} px (dx {:.2f}, dy {:.2f}), {:.3f} deg, scale {:.4f}", std::hypot(motion.dx, motion.dy),
                     motion.dx, motion.dy, motion.rotation, motion.scale);
}

cv::Mat drawMatches(const cv::Mat& grey1, const cv::Mat& grey2, const PairResult& pair, bool circles) {
  const double scale = viewScale(grey1.size(), frameWidth);
  const cv::Mat left = viewOf(grey1, scale), right = viewOf(grey2, scale);
  cv::Mat view(left.rows, left.cols + gap + right.cols, CV_8UC3, paper);
  left.copyTo(view.colRange(0, left.cols));
  cv::Mat rightPart = view.colRange(left.cols + gap, view.cols);
  right.copyTo(rightPart);
  if (circles) drawSearchCircles(rightPart, pair, scale);

  const ColourScale colours(distances(pair), false);
  const cv::Point2f shift(static_cast<float>(left.cols + gap), 0);
  cv::Mat lines = view.clone();
  for (const PairMatch& match : pair.matches) {
    drawLine(lines, viewPoint(match.from, scale), viewPoint(match.to, scale) + shift,
             colours.colour(match.match.distance), 1);
  }
  const double weight = opacity(pair.matches.size());
  cv::addWeighted(lines, weight, view, 1 - weight, 0, view);
  for (const PairMatch& match : pair.matches) {
    const cv::Scalar colour = colours.colour(match.match.distance);
    drawDot(view, viewPoint(match.from, scale), 2.5, colour);
    drawDot(view, viewPoint(match.to, scale) + shift, 2.5, colour);
    if (pair.motion.valid && !match.inlier) drawCircle(view, viewPoint(match.to, scale) + shift, 6, {60, 60, 255}, 2);
  }

  Sheet sheet(view, headings(pair));
  colours.drawBar(sheet.picture(), sheet.footer(), "descriptor distance, bits of 1024");
  return sheet.picture();
}

}  // namespace mirel
