#include <MirelAlgorithms/smoothing/internal/ColumnRange.h>
#include <MirelAlgorithms/smoothing/internal/NeighbourMedian.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <opencv2/flann.hpp>

namespace MirelAlgorithms {
namespace {

constexpr int checks = 32, mostNeighbours = 10, fewestNeighbours = 6;
constexpr float squaredRadius = 0.1f;

// The random trees draw from the thread's generator.
class SeededGenerator {
 public:
  SeededGenerator() : before_(cv::theRNG()) { cv::theRNG() = cv::RNG(0x12345678); }
  ~SeededGenerator() { cv::theRNG() = before_; }
  SeededGenerator(const SeededGenerator&) = delete;
  SeededGenerator& operator=(const SeededGenerator&) = delete;

 private:
  cv::RNG before_;
};

// What a search has come upon within the radius. It looks at each row once, and at no more than `checks`.
class Neighbours final : public cvflann::ResultSet<float> {
 public:
  bool full() const override { return true; }
  float worstDist() const override { return squaredRadius; }
  void addPoint(float squaredDistance, int row) override {
    if (squaredDistance <= squaredRadius && count_ < checks)
      found_[count_++] =
          std::uint64_t{std::bit_cast<std::uint32_t>(squaredDistance)} << 32 | static_cast<unsigned>(row);
  }

  void clear() { count_ = 0; }

  // Leaves the nearest ones, and of equally near ones those that come first in the list.
  int keepNearest() {
    if (count_ <= mostNeighbours) return count_;
    std::nth_element(found_, found_ + mostNeighbours, found_ + count_);
    return count_ = mostNeighbours;
  }
  int row(int k) const { return static_cast<int>(found_[k] & 0xFFFFFFFF); }

 private:
  std::uint64_t found_[checks];  // ordered by distance, then row
  int count_ = 0;
};

class RandomTrees : private cv::flann::Index {
 public:
  explicit RandomTrees(const cv::Mat& positions)
      : Index(positions, cv::flann::KDTreeIndexParams(4), cvflann::FLANN_DIST_L2) {}

  // The radius search of the base keeps what it finds in a tree of its own, allocated for every row.
  void search(const float* position, Neighbours& neighbours) const {
    neighbours.clear();
    static_cast<cvflann::Index<cvflann::L2<float>>*>(index)->findNeighbors(neighbours, position, parameters_);
  }

 private:
  const cvflann::SearchParams parameters_{checks, 0.0f, true};
};

std::uint32_t everySecondBit(std::uint32_t bits) {
  bits = (bits | bits << 8) & 0x00FF00FF;
  bits = (bits | bits << 4) & 0x0F0F0F0F;
  bits = (bits | bits << 2) & 0x33333333;
  return (bits | bits << 1) & 0x55555555;
}

// All rows, along a Morton curve: neighbours take the same ways through the trees, which stay in the cache.
std::vector<int> rowsAlongCurve(const cv::Mat& positions) {
  const Range ranges[] = {columnRange(positions, 0), columnRange(positions, 1)};
  const auto step = [&](int row, int k) {
    const float share = (positions.ptr<float>(row)[k] - ranges[k].least) / ranges[k].extent();
    return share >= 0.0f && share <= 1.0f ? static_cast<std::uint32_t>(share * 65535.0f) : 0;  // NaN anywhere
  };
  std::vector<std::uint64_t> places;
  for (int i = 0; i < positions.rows; ++i) {
    const std::uint64_t place = everySecondBit(step(i, 0)) | everySecondBit(step(i, 1)) << 1;
    places.push_back(place << 32 | static_cast<unsigned>(i));
  }
  std::sort(places.begin(), places.end());
  std::vector<int> rows;
  rows.reserve(places.size());
  for (const std::uint64_t place : places) rows.push_back(static_cast<int>(place & 0xFFFFFFFF));
  return rows;
}

// The upper one where there are two in the middle. NaN is above all numbers.
float medianOf(float* values, int count) {
  const auto below = [](float a, float b) { return a < b || (std::isnan(b) && !std::isnan(a)); };
  std::nth_element(values, values + count / 2, values + count, below);
  return values[count / 2];
}

bool isNearMedian(const cv::Mat& points, int row, Neighbours& neighbours) {
  constexpr double mostDeviation = 0.1;
  const int count = neighbours.keepNearest();
  if (count < fewestNeighbours) return false;
  float values[mostNeighbours];
  for (int k = 0; k < count; ++k) values[k] = points.at<float>(neighbours.row(k), 4);
  return std::abs(points.at<float>(row, 4) - medianOf(values, count)) < mostDeviation;
}

}  // namespace

std::vector<int> rowsNearNeighbourMedian(const cv::Mat& points) {
  const SeededGenerator seeded;
  const cv::Mat positions = points.colRange(2, 4).clone();
  const RandomTrees trees(positions);
  Neighbours neighbours;
  std::vector<int> kept;
  for (const int row : rowsAlongCurve(positions)) {
    trees.search(positions.ptr<float>(row), neighbours);
    if (isNearMedian(points, row, neighbours)) kept.push_back(row);
  }
  std::sort(kept.begin(), kept.end());
  return kept;
}

}  // namespace MirelAlgorithms
