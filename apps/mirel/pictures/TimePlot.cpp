#include "pictures/TimePlot.h"

#include "pictures/Drawing.h"
#include "pictures/Envelope.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

namespace mirel {

namespace {

constexpr int width = 1528, leftMargin = 96, rightMargin = 20, titleSpace = 30, panelHeight = 210, panelGap = 20;
constexpr int axisSpace = 48;
constexpr double textHeight = 12;
constexpr std::size_t parts = 1400;  // of an envelope: about one per pixel

const cv::Scalar gridColour(218, 215, 212), shade(240, 236, 232);
const std::array seriesColours = {cv::Scalar(178, 111, 31), cv::Scalar(13, 115, 217), cv::Scalar(77, 127, 27),
                                  cv::Scalar(173, 68, 142)};

/// A linear axis from numbers to pixels.
struct Axis {
  double low, high;
  float from, to;

  float operator()(double value) const { return from + static_cast<float>((value - low) / (high - low)) * (to - from); }
};

/// The range of all values, a little wider; not empty.
std::pair<double, double> rangeOf(const PlotPanel& panel) {
  double low = std::numeric_limits<double>::infinity(), high = -low;
  for (const PlotSeries& series : panel.series) {
    for (const double v : series.values) {
      if (!std::isfinite(v)) continue;
      low = std::min(low, v);
      high = std::max(high, v);
    }
  }
  if (low > high) return {0, 1};
  const double size = std::max(std::abs(low), std::abs(high));
  const double least = size > 0 ? 1e-6 * size : 1;
  const double margin = high - low > least ? 0.06 * (high - low) : least;
  return {low - margin, high + margin};
}

cv::Scalar colourOf(const PlotSeries& series, std::size_t index) {
  return series.dashed ? ink : seriesColours[index % seriesColours.size()];
}

/// A line from point to point; gaps where there is none.
class Pen {
 public:
  Pen(cv::Mat& view, const cv::Scalar& colour, bool dashed) : view_(view), colour_(colour), dashed_(dashed) {}

  void lift() { down_ = false; }

  void moveTo(cv::Point2f point) {
    if (down_) drawTo(point);
    last_ = point;
    down_ = true;
  }

 private:
  void drawTo(cv::Point2f point) {
    const double length = cv::norm(point - last_);
    const int pieces = dashed_ ? std::max(1, static_cast<int>(length / 2)) : 1;
    for (int i = 0; i < pieces; ++i) {
      const cv::Point2f a = last_ + (point - last_) * (static_cast<float>(i) / static_cast<float>(pieces));
      const cv::Point2f b = last_ + (point - last_) * (static_cast<float>(i + 1) / static_cast<float>(pieces));
      const bool drawn = !dashed_ || std::fmod(walked_, dash + gap) < dash;
      if (drawn) drawLine(view_, a, b, colour_, 1);
      walked_ += length / pieces;
    }
  }

  static constexpr double dash = 9, gap = 7;  // pixels

  cv::Mat& view_;
  cv::Scalar colour_;
  bool dashed_, down_ = false;
  cv::Point2f last_;
  double walked_ = 0;
};

void drawCurve(cv::Mat& view, const PlotSeries& series, const std::vector<double>& times, const cv::Scalar& colour,
               const Axis& x, const Axis& y) {
  const std::vector<double> values = envelope(series.values, parts);
  Pen pen(view, colour, series.dashed);
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (std::isfinite(values[i])) {
      pen.moveTo({x(times[i]), y(values[i])});
    } else {
      pen.lift();
    }
  }
}

/// Names with samples of their lines, ending at the right.
void drawLegend(cv::Mat& view, const PlotPanel& panel, int baseline) {
  constexpr int sample = 30, space = 8, between = 26;
  int x = width - rightMargin;
  for (std::size_t i = panel.series.size(); i-- > 0;) {
    const PlotSeries& series = panel.series[i];
    if (i > 0 && series.name == panel.series[i - 1].name) continue;
    x -= textWidth(series.name, textHeight);
    drawText(view, series.name, {x, baseline}, textHeight, ink);
    x -= space + sample;
    const float y = static_cast<float>(baseline) - 4;
    Pen pen(view, colourOf(series, i), series.dashed);
    for (const float shift : {-0.5f, 0.5f}) {
      pen.lift();
      pen.moveTo({static_cast<float>(x), y + shift});
      pen.moveTo({static_cast<float>(x + sample), y + shift});
    }
    x -= between;
  }
}

void drawShades(cv::Mat& view, const TimePlot& plot, const Axis& x, cv::Rect area) {
  for (const auto& [from, to] : plot.shaded) {
    const int left = cvRound(x(from)), right = cvRound(x(to));
    cv::rectangle(view, cv::Rect(left, area.y, std::max(1, right - left), area.height) & area, shade, cv::FILLED);
  }
}

void drawPanel(cv::Mat& view, const TimePlot& plot, const PlotPanel& panel, const std::vector<double>& times,
               const Axis& x, int top) {
  const cv::Rect area(leftMargin, top + titleSpace, width - leftMargin - rightMargin, panelHeight);
  const auto bottom = static_cast<float>(area.y + area.height);
  const auto [low, high] = rangeOf(panel);
  const Axis y = {low, high, bottom, static_cast<float>(area.y)};
  drawText(view, panel.unit.empty() ? panel.title : panel.title + ", " + panel.unit,
           {leftMargin, top + titleSpace - 10}, textHeight, ink);
  drawLegend(view, panel, top + titleSpace - 10);
  drawShades(view, plot, x, area);
  const Ticks across(x.low, x.high, 14), up(low, high, 6);
  for (const double tick : across.values) {
    drawLine(view, {x(tick), static_cast<float>(area.y)}, {x(tick), bottom}, gridColour, 1);
  }
  for (const double tick : up.values) {
    drawLine(view, {x.from, y(tick)}, {x.to, y(tick)}, gridColour, 1);
    const std::string text = up.text(tick);
    drawText(view, text, {leftMargin - 10 - textWidth(text, textHeight), cvRound(y(tick)) + 5}, textHeight, faintInk);
  }
  cv::rectangle(view, area, faintInk);
  for (std::size_t i = 0; i < panel.series.size(); ++i) {
    drawCurve(view, panel.series[i], times, colourOf(panel.series[i], i), x, y);
  }
}

void drawTimeAxis(cv::Mat& view, const TimePlot& plot, const Axis& x, int top) {
  const Ticks ticks(x.low, x.high, 14);
  for (const double tick : ticks.values) {
    const std::string text = ticks.text(tick);
    const int at = cvRound(x(tick));
    drawLine(view, cv::Point2f(x(tick), static_cast<float>(top)), cv::Point2f(x(tick), static_cast<float>(top + 5)),
             faintInk, 1);
    const int room = width - textWidth(text, textHeight);
    drawText(view, text, {std::min(at - textWidth(text, textHeight) / 2, room), top + 22}, textHeight, faintInk);
  }
  const int middle = static_cast<int>(x.from + x.to) / 2;
  drawText(view, plot.timeLabel, {middle - textWidth(plot.timeLabel, textHeight) / 2, top + 44}, textHeight, ink);
}

void drawShadeLegend(Sheet& sheet, const std::string& meaning) {
  const cv::Rect box(sheet.footer().x + leftMargin, sheet.footer().y, 30, 14);
  cv::rectangle(sheet.picture(), box, shade, cv::FILLED);
  cv::rectangle(sheet.picture(), box, faintInk);
  drawText(sheet.picture(), meaning, {box.x + box.width + 8, box.y + 12}, textHeight, ink);
}

}  // namespace

Ticks::Ticks(double low, double high, int most) {
  const double rough = (high - low) / most;
  const double power = std::pow(10, std::floor(std::log10(rough)));
  step = power;
  for (const double factor : {1, 2, 5, 10}) {
    step = factor * power;
    if (step >= rough) break;
  }
  for (double k = std::ceil(low / step); k * step <= high && values.size() <= static_cast<std::size_t>(most); ++k) {
    values.push_back(k * step);
  }
}

std::string Ticks::text(double value) const {
  const double size = values.empty() ? 0 : std::max(std::abs(values.front()), std::abs(values.back()));
  if (size >= 1e6 || step < 1e-4) return fmt::format("{:.4g}", value == 0 ? 0.0 : value);
  const int decimals = std::max(0, -static_cast<int>(std::floor(std::log10(step) + 1e-9)));
  return fmt::format("{:.{}f}", std::abs(value) < step / 2 ? 0.0 : value, decimals);
}

std::vector<std::pair<double, double>> spans(const std::vector<double>& times, const std::vector<char>& flags) {
  std::vector<std::pair<double, double>> found;
  for (std::size_t i = 0; i < flags.size(); ++i) {
    if (flags[i] == 0) continue;
    if (i == 0 || flags[i - 1] == 0) found.emplace_back(times[i], times[i]);
    found.back().second = times[i];
  }
  return found;
}

cv::Mat drawTimePlot(const TimePlot& plot, const std::vector<std::string>& lines) {
  constexpr int step = titleSpace + panelHeight + panelGap;
  const int height = step * static_cast<int>(plot.panels.size());
  cv::Mat view(height - panelGap + axisSpace, width, CV_8UC3, paper);
  const std::vector<double> times = envelopeTimes(plot.times, parts);
  const Axis x = {times.front(), times.back(), static_cast<float>(leftMargin), static_cast<float>(width - rightMargin)};
  for (std::size_t i = 0; i < plot.panels.size(); ++i) {
    drawPanel(view, plot, plot.panels[i], times, x, step * static_cast<int>(i));
  }
  drawTimeAxis(view, plot, x, height - panelGap);
  Sheet sheet(view, lines);
  if (!plot.shaded.empty()) drawShadeLegend(sheet, plot.shadedMeaning);
  return sheet.picture();
}

}  // namespace mirel
