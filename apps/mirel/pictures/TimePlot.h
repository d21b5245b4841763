/// Plots over one axis of time, stacked.
#pragma once

#include <opencv2/core/mat.hpp>
#include <string>
#include <utility>
#include <vector>

namespace mirel {

struct PlotSeries {
  std::string name;            ///< shown once where several have it
  std::vector<double> values;  ///< one per time; what is no number is a gap
  bool dashed = false;         ///< a reference: dark and thin
};

struct PlotPanel {
  std::string title;
  std::string unit;  ///< empty when it is not known
  std::vector<PlotSeries> series;
};

struct TimePlot {
  std::string timeLabel;                          ///< with the unit: "time, s"
  std::vector<double> times;                      ///< ascending
  std::vector<std::pair<double, double>> shaded;  ///< spans of time
  std::string shadedMeaning;
  std::vector<PlotPanel> panels;
};

/// Spans of time over which a flag is set.
std::vector<std::pair<double, double>> spans(const std::vector<double>& times, const std::vector<char>& flags);

/// Draws all panels, 1560 pixels wide. `lines` stand above them, the first one larger.
cv::Mat drawTimePlot(const TimePlot& plot, const std::vector<std::string>& lines);

/// Round numbers on an axis: multiples of 1, 2 or 5 times a power of ten, `most` at most.
struct Ticks {
  Ticks(double low, double high, int most);

  std::vector<double> values;
  double step;

  /// The number with as many decimals as the step needs.
  std::string text(double value) const;
};

}  // namespace mirel
