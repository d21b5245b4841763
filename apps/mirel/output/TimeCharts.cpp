#include "output/TimeCharts.h"

#include "output/PageParts.h"
#include "pictures/Envelope.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdlib>

namespace mirel {

namespace {

constexpr std::size_t parts = 1000;

/// Five digits: nobody sees more of them, and the page stays small. JSON has no infinity.
nlohmann::json shortNumber(double value) {
  if (!std::isfinite(value)) return nullptr;
  return std::strtod(fmt::format("{:.5g}", value).c_str(), nullptr);
}

nlohmann::json numbers(const std::vector<double>& values) {
  nlohmann::json list = nlohmann::json::array();
  for (const double value : values) list.push_back(shortNumber(value));
  return list;
}

}  // namespace

void addTimePlot(Report& report, const TimePlot& plot, const cv::Mat& picture) {
  if (page::library.empty()) {
    report.pictures.push_back({report.answer.title, reportJpeg(picture)});
    return;
  }
  report.chartsTitle = "Over time";
  if (!plot.shaded.empty()) report.chartsNote = "Shaded: " + plot.shadedMeaning + ".";
  const nlohmann::json labels = envelopeTimes(plot.times, parts);
  for (const PlotPanel& panel : plot.panels) {
    nlohmann::json series = nlohmann::json::array();
    for (const PlotSeries& s : panel.series) {
      series.push_back({{"name", s.name}, {"values", numbers(envelope(s.values, parts))}, {"dashed", s.dashed}});
    }
    report.charts.push_back({panel.title, plot.timeLabel, panel.unit, labels, series, false, true, plot.shaded});
  }
}

}  // namespace mirel
