#include "pictures/MatchPicture.h"

#include "pictures/ColourBar.h"
#include "pictures/Drawing.h"
#include "tracking/PairNumbers.h"

#include <fmt/format.h>

#include <algorithm>
#include <opencv2/core.hpp>

namespace mirel {

namespace {

constexpr int gap = 8, frameWidth = 780;

constexpr std::size_t mostLines = 160;  // more of them hide the frames

/// One line for so many matches.
std::size_t lineStep(const PairResult& pair) { return (pair.matches.size() + mostLines - 1) / mostLines; }

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

void drawLegend(Sheet& sheet, const ColourScale& colours, bool rings) {
  const std::string text = "not in agreement with the motion";
  constexpr double height = 11;
  const cv::Rect footer = sheet.footer();
  const int width = textWidth(text, height);
  colours.drawBar(sheet.picture(), {footer.x, footer.y, footer.width - width - 60, footer.height},
                  "descriptor distance, bits of 1024");
  if (!rings) return;
  const cv::Point place(footer.x + footer.width - width, footer.y + 12);
  drawCircle(sheet.picture(), cv::Point(place.x - 14, place.y - 5), 6, signal, 2);
  drawText(sheet.picture(), text, place, height, ink);
}

std::vector<std::string> headings(const PairResult& pair) {
  const std::string lines = lineStep(pair) > 1 ? fmt::format("; one match in {} has a line", lineStep(pair)) : "";
  return {fmt::format("left: {}   right: {}", pair.nameFrom, pair.nameTo),
          fmt::format("{} matches of {} and {} features, {} inliers{}", pair.matchCount, pair.counts.features1,
                      pair.counts.features2, pair.inliers, lines),
          "motion: " + describeMotion(pair.motion)};
}

}  // namespace

cv::Mat drawMatches(const cv::Mat& grey1, const cv::Mat& grey2, const PairResult& pair, bool circles) {
  const cv::Size largest(std::max(grey1.cols, grey2.cols), std::max(grey1.rows, grey2.rows));
  const double scale = viewScale(largest, frameWidth);
  const cv::Mat left = viewOf(grey1, scale), right = viewOf(grey2, scale);
  cv::Mat view(std::max(left.rows, right.rows), left.cols + gap + right.cols, CV_8UC3, paper);
  left.copyTo(view(cv::Rect({}, left.size())));
  cv::Mat rightPart = view(cv::Rect({left.cols + gap, 0}, right.size()));
  right.copyTo(rightPart);
  if (circles) drawSearchCircles(rightPart, pair, scale);

  const ColourScale colours(distances(pair), false);
  const cv::Point2f shift(static_cast<float>(left.cols + gap), 0);
  cv::Mat lines = view.clone();
  for (std::size_t i = 0; i < pair.matches.size(); i += lineStep(pair)) {
    const PairMatch& match = pair.matches[i];
    drawLine(lines, viewPoint(match.from, scale), viewPoint(match.to, scale) + shift,
             colours.colour(match.match.distance), 1);
  }
  const double weight = pair.matches.size() <= 60 ? 1 : 0.7;
  cv::addWeighted(lines, weight, view, 1 - weight, 0, view);
  for (const PairMatch& match : pair.matches) {
    const cv::Scalar colour = colours.colour(match.match.distance);
    drawDot(view, viewPoint(match.from, scale), 2.5, colour);
    drawDot(view, viewPoint(match.to, scale) + shift, 2.5, colour);
    if (pair.motion.valid && !match.inlier) drawCircle(view, viewPoint(match.to, scale) + shift, 6, signal, 2);
  }

  Sheet sheet(view, headings(pair));
  drawLegend(sheet, colours, pair.motion.valid);
  return sheet.picture();
}

}  // namespace mirel
