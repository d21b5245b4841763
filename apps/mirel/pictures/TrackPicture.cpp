#include "pictures/TrackPicture.h"

#include "pictures/ColourBar.h"
#include "pictures/Drawing.h"

#include <fmt/format.h>

#include <algorithm>

namespace mirel {

namespace {

constexpr std::size_t tailLength = 40;  // frames
constexpr int frameWidth = 1280;

}  // namespace

cv::Mat drawTracks(const Frame& lastFrame, int lastNumber, const Tracks& tracks) {
  std::vector<const Track*> shown;
  std::vector<double> lengths;
  for (const Track& track : tracks.all()) {
    if (track.lastFrame != lastNumber) continue;
    shown.push_back(&track);
    lengths.push_back(static_cast<double>(track.positions.size()));
  }
  std::stable_sort(shown.begin(), shown.end(),
                   [](const Track* a, const Track* b) { return a->positions.size() < b->positions.size(); });

  const double scale = viewScale(lastFrame.grey.size(), frameWidth);
  cv::Mat view = viewOf(lastFrame.grey, scale, 0.8);
  const ColourScale colours(lengths, false);
  for (const Track* track : shown) {
    const auto& positions = track->positions;
    const cv::Scalar colour = colours.colour(static_cast<double>(positions.size()));
    const std::size_t first = positions.size() - std::min(positions.size(), tailLength);
    for (const auto& [pen, thickness] : {std::pair{ink, 4}, {colour, 2}}) {
      for (std::size_t i = first + 1; i < positions.size(); ++i) {
        drawLine(view, viewPoint(positions[i - 1], scale), viewPoint(positions[i], scale), pen, thickness);
      }
    }
    drawDot(view, viewPoint(positions.back(), scale), 3.5, colour);
  }
  Sheet sheet(view, {"Tracks on the last frame: " + lastFrame.name,
                     fmt::format("{} tracks reach it; dots: this frame, tails: up to {} frames before", shown.size(),
                                 tailLength)});
  colours.drawBar(sheet.picture(), sheet.footer(), "frames in the track");
  return sheet.picture();
}

}  // namespace mirel
