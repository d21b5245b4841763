#include "pictures/ColourBar.h"

#include "pictures/Drawing.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace mirel {

namespace {

/// The colour map's 256 colours without its dark ends, which are hard to tell from a grey image.
const cv::Mat3b& palette() {
  static const cv::Mat3b colours = [] {
    cv::Mat1b levels(1, 256);
    for (int i = 0; i < 256; ++i) levels(0, i) = cv::saturate_cast<uchar>(20 + i * 220 / 255);
    cv::Mat3b mapped;
    cv::applyColorMap(levels, mapped, cv::COLORMAP_TURBO);
    return mapped;
  }();
  return colours;
}

/// Blue over white to red, dark at both ends.
const cv::Mat3b& divergingPalette() {
  static const cv::Mat3b colours = [] {
    const cv::Mat3b stops = (cv::Mat3b(1, 5) << cv::Vec3b(120, 40, 10), cv::Vec3b(215, 150, 70),
                             cv::Vec3b(248, 248, 248), cv::Vec3b(90, 130, 240), cv::Vec3b(25, 0, 130));
    cv::Mat3b mapped(1, 256);
    for (int i = 0; i < 256; ++i) {
      const double at = i / 255.0 * (stops.cols - 1);
      const int left = std::min(static_cast<int>(at), stops.cols - 2);
      mapped(0, i) = stops(0, left) * (left + 1 - at) + stops(0, left + 1) * (at - left);
    }
    return mapped;
  }();
  return colours;
}

/// Large numbers in full.
std::string numberText(double value) {
  return std::abs(value) >= 1000 && std::abs(value) < 1e6 ? fmt::format("{:.0f}", value) : fmt::format("{:.3g}", value);
}

}  // namespace

ColourScale ColourScale::diverging(double most) {
  ColourScale scale({-most, most}, false);
  scale.diverging_ = true;
  return scale;
}

const cv::Mat3b& ColourScale::colours() const { return diverging_ ? divergingPalette() : palette(); }

ColourScale::ColourScale(const std::vector<double>& values, bool mayBeLogarithmic) {
  if (values.empty()) return;
  const auto [low, high] = std::minmax_element(values.begin(), values.end());
  empty_ = false;
  low_ = *low;
  high_ = *high;
  logarithmic_ = mayBeLogarithmic && low_ > 0 && high_ > 30 * low_;
}

double ColourScale::position(double value) const {
  if (!(high_ > low_)) return 0.5;
  const double at = logarithmic_ ? std::log(value / low_) / std::log(high_ / low_) : (value - low_) / (high_ - low_);
  return std::isfinite(at) ? std::clamp(at, 0.0, 1.0) : 0;
}

double ColourScale::valueAt(double position) const {
  return logarithmic_ ? low_ * std::pow(high_ / low_, position) : low_ + position * (high_ - low_);
}

cv::Scalar ColourScale::colour(double value) const {
  const cv::Vec3b c = colours()(0, static_cast<int>(std::lround(position(value) * 255)));
  return {static_cast<double>(c[0]), static_cast<double>(c[1]), static_cast<double>(c[2])};
}

void ColourScale::drawBar(cv::Mat& picture, cv::Rect area, const std::string& title) const {
  if (empty_) return;
  constexpr double height = 11;
  constexpr int barHeight = 14, gap = 12;
  if (!(high_ > low_)) {  // nothing for a bar to tell apart
    drawText(picture, fmt::format("{}: {} everywhere", title, numberText(low_)), {area.x, area.y + barHeight - 2},
             height, ink);
    return;
  }
  const std::string label = title + (logarithmic_ ? " (log scale)" : "");
  drawText(picture, label, {area.x, area.y + barHeight - 2}, height, ink);
  const int left = area.x + textWidth(label, height) + gap;
  const cv::Rect bar(left, area.y, std::max(120, std::min(320, area.x + area.width - left - 40)), barHeight);
  cv::Mat gradient;
  cv::resize(colours(), gradient, bar.size(), 0, 0, cv::INTER_LINEAR);
  gradient.copyTo(picture(bar));
  cv::rectangle(picture, bar, ink);
  for (const double at : {0.0, 0.5, 1.0}) {
    const std::string number = numberText(valueAt(at));
    const int x = bar.x + static_cast<int>(at * (bar.width - 1));
    drawLine(picture, cv::Point2f(x, bar.y + barHeight), cv::Point2f(x, bar.y + barHeight + 4), ink, 1);
    drawText(picture, number, {x - textWidth(number, height) / 2, bar.y + barHeight + 18}, height, ink);
  }
}

}  // namespace mirel
