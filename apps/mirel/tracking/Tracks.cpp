#include "tracking/Tracks.h"

#include <algorithm>

namespace mirel {

void Tracks::add(const PairResult& pair) {
  std::map<int, std::size_t> ending;
  for (const PairMatch& match : pair.matches) {
    const auto before = ending_.find(match.match.queryIdx);
    const std::size_t index = before != ending_.end() ? before->second : tracks_.size();
    if (before == ending_.end()) tracks_.push_back({pair.from, {match.from}});
    tracks_[index].positions.push_back(match.to);
    tracks_[index].lastFrame = pair.to;
    ending[match.match.trainIdx] = index;
  }
  ending_ = std::move(ending);
}

int Tracks::longest() const {
  std::size_t longest = 0;
  for (const Track& track : tracks_) longest = std::max(longest, track.positions.size());
  return static_cast<int>(longest);
}

}  // namespace mirel
