#include "pictures/DepthPicture.h"

#include "pictures/ColourBar.h"
#include "pictures/Drawing.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <opencv2/imgproc.hpp>

namespace mirel {

namespace {

constexpr int panelWidth = 480, gap = 12;
constexpr double ends = 0.005;  // share of the values at each end that the colours do not tell apart
const cv::Vec3b holeColour(225, 222, 220), removedColour(240, 190, 236);
const cv::Scalar holeLines(150, 145, 140), removedLines(200, 60, 190);

/// The value that the share of a histogram's entries lies below.
int quantile(const std::vector<std::int64_t>& counts, double share) {
  std::int64_t all = 0, below = 0;
  for (const std::int64_t count : counts) all += count;
  std::size_t value = 0;
  while (value + 1 < counts.size() && below + counts[value] <= share * static_cast<double>(all))
    below += counts[value++];
  return static_cast<int>(value);
}

/// Scales that single far-off pixels do not stretch.
struct Scales {
  ColourScale depth{{}, false}, difference = ColourScale::diverging(0);

  explicit Scales(const DepthChange& change) {
    std::vector<std::int64_t> depths(65536), changes(65536);
    for (int y = 0; y < change.before.rows; ++y) {
      const auto* before = change.before.ptr<std::uint16_t>(y);
      const auto* after = change.after.ptr<std::uint16_t>(y);
      for (int x = 0; x < change.before.cols; ++x) {
        if (before[x] != 0) ++depths[before[x]];
        if (after[x] != 0 && after[x] != before[x]) ++changes[std::abs(after[x] - before[x])];
      }
    }
    if (change.validBefore > 0) {
      depth = ColourScale({1.0 * quantile(depths, ends), 1.0 * quantile(depths, 1 - ends)}, false);
    }
    if (change.changed > 0) difference = ColourScale::diverging(quantile(changes, 1 - ends));
  }
};

cv::Vec3b colourOf(const ColourScale& scale, double value) {
  const cv::Scalar c = scale.colour(value);
  return {cv::saturate_cast<uchar>(c[0]), cv::saturate_cast<uchar>(c[1]), cv::saturate_cast<uchar>(c[2])};
}

cv::Mat3b coloured(const cv::Mat& depth, const ColourScale& scale) {
  std::vector<cv::Vec3b> colours(65536);
  for (int i = 1; i < 65536; ++i) colours[static_cast<std::size_t>(i)] = colourOf(scale, i);
  colours[0] = holeColour;
  cv::Mat3b picture(depth.size());
  std::transform(depth.begin<std::uint16_t>(), depth.end<std::uint16_t>(), picture.begin(),
                 [&](std::uint16_t value) { return colours[value]; });
  return picture;
}

cv::Mat3b colouredDifference(const DepthChange& change, const ColourScale& scale) {
  std::vector<cv::Vec3b> colours;
  colours.reserve(2 * 65535 + 1);
  for (int i = -65535; i <= 65535; ++i) colours.push_back(colourOf(scale, i));
  const auto unchanged = colours.begin() + 65535;
  cv::Mat3b picture(change.before.size());
  std::transform(change.before.begin<std::uint16_t>(), change.before.end<std::uint16_t>(),
                 change.after.begin<std::uint16_t>(), picture.begin(), [&](std::uint16_t before, std::uint16_t after) {
                   if (after == 0) return before == 0 ? holeColour : removedColour;
                   return unchanged[after - before];
                 });
  return picture;
}

/// As `viewOf` does it for grey images.
cv::Mat scaled(const cv::Mat& picture, double scale) {
  cv::Mat view;
  const cv::Size size(std::max(1, cvRound(picture.cols * scale)), std::max(1, cvRound(picture.rows * scale)));
  cv::resize(picture, view, size, 0, 0, scale > 1 ? cv::INTER_NEAREST : cv::INTER_AREA);
  return view;
}

/// Lines where the mask of the image is set: rising ones or falling ones.
void hatch(cv::Mat& view, const cv::Mat& mask, const cv::Scalar& colour, bool rising) {
  constexpr int period = 8;
  cv::Mat where, lines = view.clone();
  cv::resize(mask, where, view.size(), 0, 0, view.cols > mask.cols ? cv::INTER_NEAREST : cv::INTER_AREA);
  for (int x = -view.rows; x < view.cols + view.rows; x += period) {
    const cv::Point2f top(static_cast<float>(x), 0);
    const int shift = rising ? -view.rows : view.rows;
    drawLine(lines, top, {static_cast<float>(x + shift), static_cast<float>(view.rows)}, colour, 1);
  }
  lines.copyTo(view, where > 127);
}

/// A title, the view, and room for its colour bar.
struct Panel {
  static constexpr int titleSpace = 26, barSpace = 48;
  cv::Mat picture;

  Panel(const std::string& title, const cv::Mat& view)
      : picture(titleSpace + view.rows + barSpace, panelWidth, CV_8UC3, paper) {
    constexpr double titleHeight = 12;
    drawText(picture, title, {2, titleSpace - 8}, titleHeight, ink);
    view.copyTo(picture(cv::Rect((panelWidth - view.cols) / 2, titleSpace, view.cols, view.rows)));
  }

  void addBar(const ColourScale& scale, const std::string& title) {
    scale.drawBar(picture, {2, picture.rows - barSpace + 10, panelWidth - 4, barSpace - 10}, title);
  }
};

Panel depthPanel(const std::string& title, const cv::Mat& depth, const ColourScale& scale, double viewScale) {
  cv::Mat view = scaled(coloured(depth, scale), viewScale);
  hatch(view, depth == 0, holeLines, true);
  Panel panel(title, view);
  panel.addBar(scale, "depth, raw");
  return panel;
}

Panel differencePanel(const DepthChange& change, const ColourScale& scale, double viewScale) {
  cv::Mat view = scaled(colouredDifference(change, scale), viewScale);
  hatch(view, change.before == 0, holeLines, true);
  hatch(view, (change.after == 0) & (change.before != 0), removedLines, false);
  if (change.largestAt) {
    const cv::Point2f at = viewPoint(*change.largestAt, viewScale);
    drawCircle(view, at, 9, paper, 4);
    drawCircle(view, at, 9, ink, 2);
  }
  Panel panel("After less before", view);
  panel.addBar(scale, "change, raw");
  return panel;
}

cv::Mat joined(const std::array<cv::Mat, 3>& panels, bool sideBySide) {
  const cv::Mat space =
      sideBySide ? cv::Mat(panels[0].rows, gap, CV_8UC3, paper) : cv::Mat(gap, panelWidth, CV_8UC3, paper);
  const std::array<cv::Mat, 5> parts = {panels[0], space, panels[1], space, panels[2]};
  cv::Mat picture;
  if (sideBySide) cv::hconcat(parts, picture);
  if (!sideBySide) cv::vconcat(parts, picture);
  return picture;
}

}  // namespace

DepthPicture drawDepth(const DepthChange& change) {
  const Scales scales(change);
  const double scale = viewScale(change.before.size(), panelWidth);
  const std::array<cv::Mat, 3> panels = {
      depthPanel(fmt::format("Before: {:.1f} % with depth", 100 * change.shareBefore()), change.before, scales.depth,
                 scale)
          .picture,
      depthPanel(fmt::format("After: {:.1f} % with depth", 100 * change.shareAfter()), change.after, scales.depth,
                 scale)
          .picture,
      differencePanel(change, scales.difference, scale).picture};
  Sheet sheet(joined(panels, true),
              {change.image,
               fmt::format("{} x {} pixels; {}, window of {} pixels", change.before.cols, change.before.rows,
                           change.filter, change.window),
               "hatched: no depth; violet: depth removed next to a hole; ring: largest change; the colours end where "
               "0.5 % of the values lie beyond"},
              0);
  return {sheet.picture(), joined(panels, false)};
}

}  // namespace mirel
