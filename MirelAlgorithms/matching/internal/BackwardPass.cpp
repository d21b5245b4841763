#include <MirelAlgorithms/matching/internal/BackwardPass.h>
#include <MirelAlgorithms/matching/internal/TracedLoop.h>

namespace MirelAlgorithms {
namespace {

// Smallest distance to the candidate from any feature but the one that it is the best of.
std::uint16_t nearestRival(const ColumnMinima& columns, const BestTwo& pair) {
  const std::size_t block = static_cast<std::size_t>(pair.place) / blockSize;
  const std::size_t lane = static_cast<std::size_t>(pair.place) % blockSize;
  const std::uint16_t least = columns.least[block].lane[lane];
  return pair.best > least ? least : columns.second[block].lane[lane];
}

bool holdsUp(const BestTwo& pair, const ColumnMinima& columns, float ratio) {
  if (pair.index < 0) return false;
  // 0 / 0 is not a number and passes.
  if (static_cast<float>(pair.best) / static_cast<float>(pair.second) > ratio) return false;
  const std::uint16_t rival = nearestRival(columns, pair);
  return rival == notMeasured || rival > blockingDistance(pair.best, ratio);
}

}  // namespace

std::uint16_t blockingDistance(std::uint16_t best, float ratio) {
  const float limit = static_cast<float>(best) / ratio;
  const bool fits = limit >= -2147483648.0f && limit < 2147483648.0f;
  return fits ? static_cast<std::uint16_t>(static_cast<std::int32_t>(limit)) : 0;
}

std::vector<std::uint8_t> acceptedPairs(const ForwardPass& forward, float ratio) {
  const std::vector<BestTwo>& best = forward.best();
  std::vector<std::uint8_t> accepted(best.size());
  tracedLoop("MirelAlgorithms::matchBackward", best.size(), [&](const FeatureRange& range) {
    for (std::size_t i = range.begin(); i != range.end(); ++i) accepted[i] = holdsUp(best[i], forward.columns(), ratio);
  });
  return accepted;
}

}  // namespace MirelAlgorithms
