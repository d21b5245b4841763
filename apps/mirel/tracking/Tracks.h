/// Features followed over many frames.
#pragma once

#include "tracking/PairResult.h"

#include <map>
#include <opencv2/core/types.hpp>
#include <vector>

namespace mirel {

/// One feature: its positions frame after frame, the last one in frame `lastFrame`.
struct Track {
  int lastFrame = 0;
  std::vector<cv::Point2f> positions;
};

/// Chains the matches of successive pairs.
class Tracks {
 public:
  /// Adds a pair; its first frame is the second one of the pair before.
  void add(const PairResult& pair);

  const std::vector<Track>& all() const { return tracks_; }

  /// Number of frames of the longest track.
  int longest() const;

 private:
  std::vector<Track> tracks_;
  std::map<int, std::size_t> ending_;  ///< by feature of the last frame, the track that ends in it
};

}  // namespace mirel
