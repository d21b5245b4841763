#include <MirelAlgorithms/matching/internal/FeatureBlocks.h>
#include <MirelAlgorithms/matching/internal/SpatialOrder.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace MirelAlgorithms {
namespace {

constexpr std::size_t blocksFor(std::size_t count) { return (count + blockSize - 1) / blockSize; }

// Smallest k with bits * 2^k >= 1024.
unsigned shiftTo1024(int bytes) {
  unsigned bits = 8 * static_cast<unsigned>(bytes), shift = 0;
  for (; bits != 0 && bits < 1024; bits *= 2) ++shift;
  return shift;
}

Box boxAround(const float* x, const float* y, std::size_t count) {
  constexpr float infinity = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  Box box{infinity, infinity, -infinity, -infinity};
  for (std::size_t k = 0; k < count; ++k) {
    if (!std::isfinite(x[k]) || !std::isfinite(y[k])) return {nan, nan, nan, nan};
    box.left = std::min(box.left, x[k]);
    box.top = std::min(box.top, y[k]);
    box.right = std::max(box.right, x[k]);
    box.bottom = std::max(box.bottom, y[k]);
  }
  return box;
}

// Around both boxes; not a number if one of them is not.
Box boxAround(const Box& a, const Box& b) {
  if (std::isnan(a.left) || std::isnan(b.left)) return std::isnan(a.left) ? a : b;
  return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right), std::max(a.bottom, b.bottom)};
}

}  // namespace

FeatureBlocks::FeatureBlocks(const std::vector<cv::KeyPoint>& keyPoints, const cv::Mat& rows)
    : size(keyPoints.size()),
      words(static_cast<std::size_t>(rows.cols) / sizeof(std::uint64_t)),
      shift(shiftTo1024(rows.cols)),
      descriptors(blocksFor(size) * words),
      x(blocksFor(size)),
      y(blocksFor(size)),
      index(blocksFor(size)),
      boxes(blocksFor(blocksFor(size))) {
  const std::vector<std::int32_t> order = spatialOrder(keyPoints, blockSize);
  for (std::size_t i = 0; i < size; ++i)
    place(i, keyPoints[static_cast<std::size_t>(order[i])], order[i], rows.ptr(order[i]));
  findBoxes();
}

void FeatureBlocks::place(std::size_t i, const cv::KeyPoint& keyPoint, std::int32_t number,
                          const unsigned char* descriptor) {
  const std::size_t block = i / blockSize, feature = i % blockSize;
  x[block].lane[feature] = keyPoint.pt.x;
  y[block].lane[feature] = keyPoint.pt.y;
  index[block].lane[feature] = number;
  for (std::size_t w = 0; w < words; ++w)
    std::memcpy(&descriptors[block * words + w].lane[wordPlace(feature)], descriptor + w * sizeof(std::uint64_t),
                sizeof(std::uint64_t));
}

void FeatureBlocks::findBoxes() {
  for (std::size_t block = 0; block < blocks(); ++block) {
    const std::size_t features = std::min(blockSize, size - block * blockSize);
    const Box box = boxAround(x[block].lane, y[block].lane, features);
    BoxLanes& lanes = boxes[block / blockSize];
    lanes.left.lane[block % blockSize] = box.left;
    lanes.top.lane[block % blockSize] = box.top;
    lanes.right.lane[block % blockSize] = box.right;
    lanes.bottom.lane[block % blockSize] = box.bottom;
    around_ = block == 0 ? box : boxAround(around_, box);
  }
}

// Rounding is monotonic: no feature's distance, computed likewise, is above that of the farthest corner.
bool FeatureBlocks::allInside(const FBPrediction& circle) const {
  const float dx = std::max(std::abs(circle.x - around_.left), std::abs(circle.x - around_.right));
  const float dy = std::max(std::abs(circle.y - around_.top), std::abs(circle.y - around_.bottom));
  return dy * dy + dx * dx <= circle.searchRadiusSq;
}

}  // namespace MirelAlgorithms
