#include <MirelAlgorithms/smoothing/internal/NeighbourMedian.h>

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/flann.hpp>

namespace MirelAlgorithms {
namespace {

constexpr int mostNeighbours = 10, fewestNeighbours = 6;

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

// The upper one where there are two in the middle. NaN is above all numbers.
float medianOf(float* values, int count) {
  const auto below = [](float a, float b) { return a < b || (std::isnan(b) && !std::isnan(a)); };
  std::nth_element(values, values + count / 2, values + count, below);
  return values[count / 2];
}

}  // namespace

std::vector<int> rowsNearNeighbourMedian(const cv::Mat& points) {
  constexpr double squaredRadius = 0.1;
  constexpr double mostDeviation = 0.1;
  constexpr int trees = 4, checks = 32;
  const SeededGenerator seeded;
  cv::Mat positions = points.colRange(2, 4).clone();
  cv::flann::Index index(positions, cv::flann::KDTreeIndexParams(trees), cvflann::FLANN_DIST_L2);
  const cv::flann::SearchParams search(checks, 0.0f, true);

  std::vector<int> kept;
  cv::Mat neighbours, distances;
  for (int i = 0; i < points.rows; ++i) {
    const int found =
        index.radiusSearch(positions.row(i), neighbours, distances, squaredRadius, mostNeighbours, search);
    const int count = std::min(found, mostNeighbours);
    if (count < fewestNeighbours) continue;
    float values[mostNeighbours];
    for (int k = 0; k < count; ++k) values[k] = points.at<float>(neighbours.at<int>(k), 4);
    if (std::abs(points.at<float>(i, 4) - medianOf(values, count)) < mostDeviation) kept.push_back(i);
  }
  return kept;
}

}  // namespace MirelAlgorithms
