#include "pictures/MatchPicture.h"

#include "pictures/ColourBar.h"
#include "pictures/Drawing.h"
#include "pictures/PairView.h"
#include "tracking/PairNumbers.h"

#include <fmt/format.h>

#include <algorithm>

namespace mirel {

namespace {

std::vector<PairLine> linesOf(const PairResult& pair) {
  std::vector<PairLine> lines;
  for (const PairMatch& m : pair.matches) lines.push_back({m.from, m.to, static_cast<double>(m.match.distance)});
  return lines;
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
  return {fmt::format("left: {}   right: {}", pair.nameFrom, pair.nameTo),
          fmt::format("{} matches of {} and {} features, {} inliers{}", pair.matchCount, pair.counts.features1,
                      pair.counts.features2, pair.inliers, PairView::lineStepText(pair.matches.size())),
          "motion: " + describeMotion(pair.motion)};
}

}  // namespace

cv::Mat drawMatches(const cv::Mat& grey1, const cv::Mat& grey2, const PairResult& pair, bool circles) {
  PairView view(grey1, grey2);
  cv::Mat second = view.second();
  if (circles) drawSearchCircles(second, pair, view.scale());
  const std::vector<PairLine> lines = linesOf(pair);
  const ColourScale colours = coloursOf(lines);
  view.draw(lines, colours);
  for (const PairMatch& match : pair.matches) {
    if (pair.motion.valid && !match.inlier) drawCircle(view.picture(), view.placeInSecond(match.to), 6, signal, 2);
  }
  Sheet sheet(view.picture(), headings(pair));
  drawLegend(sheet, colours, pair.motion.valid);
  return sheet.picture();
}

}  // namespace mirel
