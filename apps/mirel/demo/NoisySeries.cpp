/// Two quantities as a cheap instrument measures them.
#include "demo/DemoData.h"
#include "demo/Noise.h"

#include <fmt/format.h>

#include <cmath>

namespace mirel {

void writeNoisySeries(OutputFolder& folder) {
  Noise noise(6);
  std::string text = "t_s,distance_mm,temperature_degC\n";
  for (int i = 0; i < 500; ++i) {
    const double t = i / 50.0;
    const double distance = 40 + 12 * std::exp(-0.25 * t) * std::sin(2 * CV_PI * (0.25 + 0.06 * t) * t);
    const double temperature = 24 + 6 / (1 + std::exp(-3 * (t - 4))) - 0.25 * t;
    text += fmt::format("{:.2f},{:.4f},{:.4f}\n", t, distance + noise.normal(1.2), temperature + noise.normal(0.5));
  }
  folder.write("series.csv", text);
}

}  // namespace mirel
