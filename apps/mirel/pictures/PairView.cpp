#include "pictures/PairView.h"

#include "pictures/Drawing.h"

#include <fmt/format.h>

#include <algorithm>
#include <opencv2/core.hpp>

namespace mirel {

namespace {

constexpr int gap = 8, imageWidth = 780;
constexpr std::size_t mostLines = 160;  // more of them hide the images

}  // namespace

PairView::PairView(const cv::Mat& grey1, const cv::Mat& grey2)
    : scale_(viewScale({std::max(grey1.cols, grey2.cols), std::max(grey1.rows, grey2.rows)}, imageWidth)) {
  const cv::Mat left = viewOf(grey1, scale_), right = viewOf(grey2, scale_);
  picture_ = cv::Mat(std::max(left.rows, right.rows), left.cols + gap + right.cols, CV_8UC3, paper);
  second_ = {{left.cols + gap, 0}, right.size()};
  left.copyTo(picture_(cv::Rect({}, left.size())));
  right.copyTo(picture_(second_));
}

cv::Point2f PairView::placeInSecond(cv::Point2f point) const {
  return viewPoint(point, scale_) + cv::Point2f(static_cast<float>(second_.x), 0);
}

void PairView::draw(const std::vector<PairLine>& lines, const ColourScale& colours) {
  cv::Mat drawn = picture_.clone();
  for (std::size_t i = 0; i < lines.size(); i += lineStep(lines.size())) {
    const PairLine& line = lines[i];
    drawLine(drawn, viewPoint(line.from, scale_), placeInSecond(line.to), colours.colour(line.value), 1);
  }
  const double weight = lines.size() <= 60 ? 1 : 0.7;
  cv::addWeighted(drawn, weight, picture_, 1 - weight, 0, picture_);
  for (const PairLine& line : lines) {
    const cv::Scalar colour = colours.colour(line.value);
    drawDot(picture_, viewPoint(line.from, scale_), 2.5, colour);
    drawDot(picture_, placeInSecond(line.to), 2.5, colour);
  }
}

std::size_t PairView::lineStep(std::size_t matches) {
  return std::max<std::size_t>(1, (matches + mostLines - 1) / mostLines);
}

std::string PairView::lineStepText(std::size_t matches) {
  const std::size_t step = lineStep(matches);
  return step > 1 ? fmt::format("; one match in {} has a line", step) : "";
}

ColourScale coloursOf(const std::vector<PairLine>& lines) {
  std::vector<double> values;
  values.reserve(lines.size());
  for (const PairLine& line : lines) values.push_back(line.value);
  return {values, false};
}

}  // namespace mirel
