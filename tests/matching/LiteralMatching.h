/// Guided matching as plainly as it can be said: a full cache of distances and nested loops. Shares no code with the
/// library but the records and the image motion; the library must give the same bits.
#pragma once

#include <MirelAlgorithms/matching/FeatureMatching.h>
#include <MirelAlgorithms/matching/MotionEstimate.h>

#include <algorithm>
#include <bit>
#include <cstring>

namespace literal {

using namespace MirelAlgorithms;
using KeyPoints = std::vector<cv::KeyPoint>;

inline std::uint16_t distance(const unsigned char* a, const unsigned char* b, unsigned words, unsigned shift) {
  if (words == 0) return 65535;
  std::uint64_t bits = 0;
  for (unsigned w = 0; w < words; ++w) {
    std::uint64_t wordA, wordB;
    std::memcpy(&wordA, a + 8 * w, 8);
    std::memcpy(&wordB, b + 8 * w, 8);
    bits += static_cast<std::uint64_t>(std::popcount(wordA ^ wordB));
  }
  return static_cast<std::uint16_t>(bits << shift);
}

// What the x86 conversion instruction gives, low 16 bits.
inline std::uint16_t truncated(float value) {
  if (!(value >= -2147483648.0f && value < 2147483648.0f)) return 0;
  return static_cast<std::uint16_t>(static_cast<std::int32_t>(value));
}

struct Best {
  std::uint16_t best = 65535, second = 65535;
  std::int32_t index = -1;
};

class Matcher {
 public:
  Matcher(const KeyPoints& keyPoints1, const cv::Mat& descriptors1, const KeyPoints& keyPoints2,
          const cv::Mat& descriptors2, const FBMValidationParams& params)
      : keyPoints1_(keyPoints1),
        descriptors1_(descriptors1),
        keyPoints2_(keyPoints2),
        descriptors2_(descriptors2),
        params_(params),
        words_(static_cast<unsigned>(descriptors2.cols) / 8),
        cache_(keyPoints1.size() * keyPoints2.size(), 65535) {
    while ((8u * static_cast<unsigned>(descriptors2.cols)) << shift_ < 1024) ++shift_;
  }

  bool run(std::vector<FBMatch>& matches, std::vector<FBPrediction>& predictions) {
    if (predictions.size() != keyPoints1_.size()) {
      predictions.clear();
      for (const cv::KeyPoint& k : keyPoints1_) predictions.push_back({k.pt.x, k.pt.y, params_.searchRadiusSq, 1});
    }
    pass(true, matches, predictions);
    if (params_.refine && predictAgain(matches, predictions)) pass(false, matches, predictions);
    const int size1 = static_cast<int>(keyPoints1_.size()), size2 = static_cast<int>(keyPoints2_.size());
    return static_cast<unsigned>(matches.size()) >=
           static_cast<unsigned>(std::min({size1 - 2, size2 - 2, params_.minMatches}));
  }

 private:
  void pass(bool compute, std::vector<FBMatch>& matches, std::vector<FBPrediction>& predictions) {
    std::vector<Best> best(keyPoints1_.size());
    for (std::size_t i = 0; i < best.size(); ++i) forward(i, compute, predictions[i], best[i]);
    matches.clear();
    for (std::size_t i = 0; i < best.size(); ++i) {
      if (!accepted(i, best[i])) continue;
      const auto j = static_cast<std::size_t>(best[i].index);
      FBPrediction& p = predictions[i];
      matches.push_back({static_cast<std::int32_t>(i), best[i].index, cache(i, j), p.x, p.y});
      p = {keyPoints2_[j].pt.x, keyPoints2_[j].pt.y, p.searchRadiusSq, 4};
    }
  }

  void forward(std::size_t i, bool compute, const FBPrediction& p, Best& best) {
    for (std::size_t j = 0; j < keyPoints2_.size(); ++j) {
      const float dx = p.x - keyPoints2_[j].pt.x;
      const float dy = p.y - keyPoints2_[j].pt.y;
      if (dy * dy + dx * dx > p.searchRadiusSq) continue;
      if (compute)
        cache(i, j) =
            distance(descriptors1_.ptr(static_cast<int>(i)), descriptors2_.ptr(static_cast<int>(j)), words_, shift_);
      const std::uint16_t d = cache(i, j);
      if (d > params_.maxDistance) continue;
      if (d < best.best) {
        best.second = best.best;
        best.best = d;
        best.index = static_cast<std::int32_t>(j);
      } else if (d < best.second) {
        best.second = d;
      }
    }
  }

  bool accepted(std::size_t i, const Best& best) {
    if (best.index < 0) return false;
    if (static_cast<float>(best.best) / static_cast<float>(best.second) > params_.ratio) return false;
    const std::uint16_t t = truncated(static_cast<float>(best.best) / params_.ratio);
    for (std::size_t k = 0; k < keyPoints1_.size(); ++k) {
      const std::uint16_t other = cache(k, static_cast<std::size_t>(best.index));
      if (k != i && other != 65535 && other <= t) return false;
    }
    return true;
  }

  bool predictAgain(const std::vector<FBMatch>& matches, std::vector<FBPrediction>& predictions) {
    std::vector<cv::Vec2f> from, to;
    for (const FBMatch& match : matches) {
      from.push_back(keyPoints1_[static_cast<std::size_t>(match.queryIdx)].pt);
      to.push_back(keyPoints2_[static_cast<std::size_t>(match.trainIdx)].pt);
    }
    const MotionEstimate motion = MotionEstimate::estimate(from, to, {});
    if (!motion.isValid()) return false;
    const double s = std::max(motion.meanInlierResidual, 2.0);
    for (std::size_t i = 0; i < predictions.size(); ++i) {
      FBPrediction& p = predictions[i];
      if (p.state == 4) {
        p.searchRadiusSq /= 2;
        continue;
      }
      const cv::Vec2f moved = motion.apply(cv::Vec2f(keyPoints1_[i].pt));
      p = {moved[0], moved[1], std::min(static_cast<float>(s * s) * 16, p.searchRadiusSq), 3};
    }
    return true;
  }

  std::uint16_t& cache(std::size_t i, std::size_t j) { return cache_[i * keyPoints2_.size() + j]; }

  const KeyPoints& keyPoints1_;
  const cv::Mat& descriptors1_;
  const KeyPoints& keyPoints2_;
  const cv::Mat& descriptors2_;
  const FBMValidationParams& params_;
  unsigned words_, shift_ = 0;
  std::vector<std::uint16_t> cache_;
};

inline bool matchFeatures(const KeyPoints& keyPoints1, const cv::Mat& descriptors1, const KeyPoints& keyPoints2,
                          const cv::Mat& descriptors2, const FBMValidationParams& params, std::vector<FBMatch>& matches,
                          std::vector<FBPrediction>& predictions) {
  return Matcher(keyPoints1, descriptors1, keyPoints2, descriptors2, params).run(matches, predictions);
}

}  // namespace literal
