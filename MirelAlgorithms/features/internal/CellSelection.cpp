#include <MirelAlgorithms/features/internal/CellSelection.h>

#include <unordered_map>

namespace MirelAlgorithms {
namespace {

using KeyPoints = std::vector<cv::KeyPoint>;

/// Number of the cell in single precision, row by row; -1 outside the grid.
std::int64_t cellOf(const cv::Point2f& point, const CellGrid& grid) {
  const float cells = static_cast<float>(grid.cells);
  const auto row = static_cast<std::int64_t>(cells * point.y / static_cast<float>(grid.rows));
  const auto column = static_cast<std::int64_t>(cells * point.x / static_cast<float>(grid.cols));
  const std::int64_t side = grid.cells, cell = row * side + column;
  return cell >= 0 && cell < side * side ? cell : -1;
}

/// Takes candidates in order while the budget lasts; each for which eligible(candidate, number taken in its cell) holds
/// and whose cell has fewer than `quota`.
template <class Eligible>
KeyPoints take(const KeyPoints& candidates, const CellGrid& grid, std::int64_t quota, std::int64_t budget,
               const Eligible& eligible) {
  KeyPoints taken;
  if (quota <= 0) return taken;
  std::unordered_map<std::int64_t, std::int64_t> counts;  // only cells that hold something, however many there are
  for (const cv::KeyPoint& candidate : candidates) {
    const std::int64_t cell = cellOf(candidate.pt, grid);
    if (cell < 0) continue;
    std::int64_t& count = counts[cell];
    if (count >= quota || !eligible(candidate, count)) continue;
    ++count;
    taken.push_back(candidate);
    if (static_cast<std::int64_t>(taken.size()) >= budget) break;
  }
  return taken;
}

double meanResponse(const KeyPoints& keyPoints) {
  if (keyPoints.empty()) return 0.0;
  double sum = 0.0;
  for (const cv::KeyPoint& keyPoint : keyPoints) sum += keyPoint.response;
  return sum / static_cast<double>(keyPoints.size());
}

std::int64_t quotaOf(std::int64_t budget, const CellGrid& grid) { return budget / grid.cells / grid.cells; }

}  // namespace

KeyPoints selectPerCell(const KeyPoints& strongestFirst, const CellGrid& grid, std::int64_t budget, double threshold) {
  const std::int64_t quota = quotaOf(budget, grid);
  return take(strongestFirst, grid, quota, budget, [=](const cv::KeyPoint& candidate, std::int64_t count) {
    return candidate.response >= threshold || count <= quota / 3;
  });
}

double automaticThreshold(const KeyPoints& strongestFirst, const CellGrid& grid, std::int64_t budget) {
  const KeyPoints strongest =
      take(strongestFirst, grid, quotaOf(budget, grid), budget, [](const cv::KeyPoint&, std::int64_t) { return true; });
  const double mean = meanResponse(strongest);
  const std::int64_t half = budget / 2;
  return meanResponse(take(strongestFirst, grid, quotaOf(half, grid), half,
                           [=](const cv::KeyPoint& candidate, std::int64_t) { return candidate.response >= mean; }));
}

}  // namespace MirelAlgorithms
