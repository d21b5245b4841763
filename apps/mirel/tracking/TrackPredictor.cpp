#include "tracking/TrackPredictor.h"

namespace mirel {

using MirelAlgorithms::FeaturePrediction;
using MirelAlgorithms::SVec2d;

// A track keeps its last two positions, which are continued linearly. A third one would add the acceleration, and with
// it noise: on real videos it makes the median error half as large again or more, and over swaying cameras up to 160 px
// a frame it finds no more matches.
void TrackPredictor::add(const PairResult& pair) {
  lastFrame_ = static_cast<std::uint64_t>(pair.to);
  tracks_.clear();
  for (const PairMatch& match : pair.matches) {
    FeaturePrediction& track = tracks_[match.match.trainIdx];
    track.update(SVec2d(match.from.x, match.from.y), static_cast<std::uint64_t>(pair.from));
    track.update(SVec2d(match.to.x, match.to.y), lastFrame_);
  }
}

std::optional<cv::Point2f> TrackPredictor::next(int feature) const {
  const auto track = tracks_.find(feature);
  if (track == tracks_.end() || !track->second.predictable(lastFrame_ + 1)) return std::nullopt;
  const SVec2d there = track->second.predictPosition(lastFrame_ + 1);
  return cv::Point2f(static_cast<float>(there.x), static_cast<float>(there.y));
}

}  // namespace mirel
