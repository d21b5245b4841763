/// Weights of the quadratic and cubic smoothing polynomials in their reduced integer form.
#pragma once

#include <array>

namespace MirelAlgorithms {

struct SmoothingWindow {
  static constexpr int widest = 25;

  int width;
  double normaliser;
  std::array<double, widest> weights;  ///< of offsets -(width - 1) / 2 to (width - 1) / 2
};

/// For half width m and offset i the weight is 3 (3 m^2 + 3 m - 1 - 5 i^2) / ((2m + 3)(2m + 1)(2m - 1)) times the
/// normaliser (Savitzky and Golay 1964, tables corrected by Steinier, Termonia, Deltour, Analytical Chemistry 44 (1972)
/// 1906). One weight of the widest window is one too large at both offsets 5 and -5, on purpose: recordings
/// smoothed so far were smoothed with it.
constexpr SmoothingWindow smoothingWindow(int width, int normaliser) {
  SmoothingWindow window{width, static_cast<double>(normaliser), {}};
  const int m = (width - 1) / 2;
  for (int i = -m; i <= m; ++i) {
    const int weight = normaliser * 3 * (3 * m * m + 3 * m - 1 - 5 * i * i) / ((2 * m + 3) * (2 * m + 1) * (2 * m - 1));
    window.weights[i + m] = weight;
  }
  if (width == 25) window.weights[m - 5] = window.weights[m + 5] = 343;
  return window;
}

inline constexpr std::array<SmoothingWindow, 11> smoothingWindows = {
    smoothingWindow(5, 35),    smoothingWindow(7, 21),    smoothingWindow(9, 231),   smoothingWindow(11, 429),
    smoothingWindow(13, 143),  smoothingWindow(15, 1105), smoothingWindow(17, 323),  smoothingWindow(19, 2261),
    smoothingWindow(21, 3059), smoothingWindow(23, 805),  smoothingWindow(25, 5175),
};

/// The window of a width; null for a width without one.
constexpr const SmoothingWindow* findSmoothingWindow(int width) {
  for (const SmoothingWindow& window : smoothingWindows)
    if (window.width == width) return &window;
  return nullptr;
}

}  // namespace MirelAlgorithms
