#include "tracking/MatchCounts.h"

#include <MirelAlgorithms/matching/Hamming.h>
#include <fmt/format.h>

namespace mirel {

using MirelAlgorithms::FBMValidationParams;
using MirelAlgorithms::FBPrediction;

namespace {

constexpr std::uint16_t notMeasured = 65535;

bool inCircle(const FBPrediction& prediction, const cv::Point2f& point) {
  const float dx = prediction.x - point.x, dy = prediction.y - point.y;
  return !(dy * dy + dx * dx > prediction.searchRadiusSq);
}

/// Hamming distance on the 1024-bit scale.
class Measure {
 public:
  explicit Measure(int bytes) : words_(static_cast<unsigned>(bytes) / 8) {
    for (unsigned bits = 8u * static_cast<unsigned>(bytes); bits < 1024; bits *= 2) ++shift_;
  }

  std::uint16_t operator()(const uchar* a, const uchar* b) const {
    if (words_ == 0) return notMeasured;
    return MirelAlgorithms::computeHammingDistance(reinterpret_cast<const std::uint64_t*>(a),
                                                   reinterpret_cast<const std::uint64_t*>(b), words_, shift_);
  }

 private:
  unsigned words_;
  unsigned shift_ = 0;
};

/// Distances of all pairs inside the circles, `notMeasured` elsewhere.
cv::Mat1w distances(const std::vector<cv::KeyPoint>& keyPoints2, const cv::Mat& descriptors1,
                    const cv::Mat& descriptors2, const std::vector<FBPrediction>& predictions, MatchCounts& counts) {
  cv::Mat1w table(descriptors1.rows, descriptors2.rows, notMeasured);
  const Measure measure(descriptors2.cols);
  for (int i = 0; i < table.rows; ++i) {
    bool any = false;
    for (int j = 0; j < table.cols; ++j) {
      if (!inCircle(predictions[i], keyPoints2[j].pt)) continue;
      table(i, j) = measure(descriptors1.ptr(i), descriptors2.ptr(j));
      any = true;
    }
    counts.inCircle += any;
  }
  return table;
}

struct BestTwo {
  int best = notMeasured, second = notMeasured, index = -1;
};

BestTwo bestTwo(const std::uint16_t* row, int count, int maxDistance) {
  BestTwo result;
  for (int j = 0; j < count; ++j) {
    if (row[j] > maxDistance) continue;
    if (row[j] < result.best) {
      result = {row[j], result.best, j};
    } else if (row[j] < result.second) {
      result.second = row[j];
    }
  }
  return result;
}

bool hasRival(const cv::Mat1w& table, int i, const BestTwo& pair, float ratio) {
  const int limit = static_cast<int>(static_cast<float>(pair.best) / ratio);
  for (int k = 0; k < table.rows; ++k) {
    if (k != i && table(k, pair.index) <= limit) return true;
  }
  return false;
}

}  // namespace

MatchCounts countMatches(const std::vector<cv::KeyPoint>& keyPoints1, const cv::Mat& descriptors1,
                         const std::vector<cv::KeyPoint>& keyPoints2, const cv::Mat& descriptors2,
                         const FBMValidationParams& params, const std::vector<FBPrediction>& predictions) {
  MatchCounts counts{static_cast<int>(keyPoints1.size()), static_cast<int>(keyPoints2.size())};
  if (keyPoints1.empty() || keyPoints2.empty()) return counts;
  const cv::Mat1w table = distances(keyPoints2, descriptors1, descriptors2, predictions, counts);
  for (int i = 0; i < table.rows; ++i) {
    const BestTwo pair = bestTwo(table[i], table.cols, params.maxDistance);
    if (pair.index < 0) continue;
    ++counts.withinDistance;
    if (static_cast<float>(pair.best) / static_cast<float>(pair.second) > params.ratio) continue;
    ++counts.ratioTest;
    counts.backwardTest += !hasRival(table, i, pair, params.ratio);
  }
  return counts;
}

std::string explainFewMatches(const MatchCounts& counts, int matches, int wanted, MirelAlgorithms::FBMFilterMode mode) {
  if (counts.features1 == 0 || counts.features2 == 0) {
    return fmt::format("{} features in the first frame, {} in the second: nothing to compare", counts.features1,
                       counts.features2);
  }
  const char* advice = mode == MirelAlgorithms::Narrow ? "; --mode wide searches farther and is less strict" : "";
  return fmt::format(
      "{} features, {} with candidates in their circle, {} within the distance, {} after the ratio test, {} after the "
      "backward test; {} matches, {} wanted{}",
      counts.features1, counts.inCircle, counts.withinDistance, counts.ratioTest, counts.backwardTest, matches, wanted,
      advice);
}

}  // namespace mirel
