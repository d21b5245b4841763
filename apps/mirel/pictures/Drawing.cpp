#include "pictures/Drawing.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace mirel {

namespace {

constexpr int plainFont = cv::FONT_HERSHEY_SIMPLEX, titleFont = cv::FONT_HERSHEY_DUPLEX;
constexpr double fontHeight = 22;  // capital letters of that font at scale 1, pixels
constexpr int subPixelBits = 4;

int fontFor(double height) { return height >= 15 ? titleFont : plainFont; }

cv::Point fixedPoint(cv::Point2f point) {
  const float limit = 1e6f;  // farther away nothing is seen, and OpenCV's own numbers stay small
  const auto fixed = [=](float v) {
    return static_cast<int>(std::lround(std::clamp(v, -limit, limit) * (1 << subPixelBits)));
  };
  return {fixed(point.x), fixed(point.y)};
}

}  // namespace

double viewScale(cv::Size image, int width) {
  const double fit = std::min(static_cast<double>(width) / image.width, 1.25 * width / image.height);
  return fit >= 2 ? std::floor(std::min(fit, 32.0)) : std::min(fit, 1.0);
}

cv::Mat viewOf(const cv::Mat& grey, double scale, double strength) {
  cv::Mat resized, faded, view;
  const cv::Size size(std::max(1, cvRound(grey.cols * scale)), std::max(1, cvRound(grey.rows * scale)));
  cv::resize(grey, resized, size, 0, 0, scale > 4 ? cv::INTER_NEAREST : scale > 1 ? cv::INTER_CUBIC : cv::INTER_AREA);
  resized.convertTo(faded, CV_8U, strength, 255 * (1 - strength));
  cv::cvtColor(faded, view, cv::COLOR_GRAY2BGR);
  return view;
}

cv::Point2f viewPoint(cv::Point2f point, double scale) {
  const auto s = static_cast<float>(scale);
  return {(point.x + 0.5f) * s - 0.5f, (point.y + 0.5f) * s - 0.5f};
}

int textWidth(const std::string& text, double height) {
  return cv::getTextSize(text, fontFor(height), height / fontHeight, 1, nullptr).width;
}

void drawText(cv::Mat& picture, const std::string& text, cv::Point baseline, double height, const cv::Scalar& colour) {
  cv::putText(picture, text, baseline, fontFor(height), height / fontHeight, colour, 1, cv::LINE_AA);
}

std::string fitText(const std::string& text, double height, int width) {
  std::string shorter = text;
  for (std::size_t kept = text.size(); kept > 4 && textWidth(shorter, height) > width;) {
    --kept;
    shorter = text.substr(0, kept - kept / 2) + "..." + text.substr(text.size() - kept / 2);
  }
  return shorter;
}

void drawLine(cv::Mat& picture, cv::Point2f from, cv::Point2f to, const cv::Scalar& colour, int thickness) {
  cv::line(picture, fixedPoint(from), fixedPoint(to), colour, thickness, cv::LINE_AA, subPixelBits);
}

void drawCircle(cv::Mat& picture, cv::Point2f centre, double radius, const cv::Scalar& colour, int thickness) {
  const int fixedRadius = static_cast<int>(std::lround(std::min(radius, 1e6) * (1 << subPixelBits)));
  cv::circle(picture, fixedPoint(centre), fixedRadius, colour, thickness, cv::LINE_AA, subPixelBits);
}

void drawDot(cv::Mat& picture, cv::Point2f centre, double radius, const cv::Scalar& colour) {
  drawCircle(picture, centre, radius + 0.8, ink, cv::FILLED);
  drawCircle(picture, centre, radius, colour, cv::FILLED);
}

Sheet::Sheet(const cv::Mat& view, const std::vector<std::string>& lines, int footerHeight) {
  constexpr int margin = 16, lineStep = 24, leastWidth = 720;
  constexpr double titleHeight = 15, lineHeight = 11;
  const int header = margin + lineStep * static_cast<int>(lines.size()) + 8;
  const int width = std::max(leastWidth, view.cols + 2 * margin);
  picture_ = cv::Mat(header + view.rows + footerHeight + margin, width, CV_8UC3, paper);
  view.copyTo(picture_(cv::Rect((width - view.cols) / 2, header, view.cols, view.rows)));
  int y = margin + lineStep / 2;
  for (const std::string& line : lines) {
    const bool title = &line == &lines.front();
    const double height = title ? titleHeight : lineHeight;
    drawText(picture_, fitText(line, height, width - 2 * margin), {margin, y + 4}, height, title ? ink : faintInk);
    y += lineStep;
  }
  footer_ = {margin, header + view.rows + 12, width - 2 * margin, footerHeight};
}

}  // namespace mirel
