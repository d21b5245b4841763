/// Frames to match: random ones with many equal distances, hostile ones, and ones whose distances can be read off.
#pragma once

#include <MirelAlgorithms/matching/FeatureMatching.h>

#include <cfloat>
#include <limits>
#include <random>

using namespace MirelAlgorithms;

using KeyPoints = std::vector<cv::KeyPoint>;
using Random = std::mt19937;

inline constexpr float infinity = std::numeric_limits<float>::infinity();
inline constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

struct Input {
  KeyPoints keyPoints1, keyPoints2;
  cv::Mat descriptors1, descriptors2;
  FBMValidationParams params{Exhaustive};
  std::vector<FBPrediction> predictions;
};

template <class T>
T oneOf(Random& random, std::initializer_list<T> values) {
  return values.begin()[random() % values.size()];
}

inline float uniform(Random& random, float least, float most) {
  return std::uniform_real_distribution<float>(least, most)(random);
}

// Descriptors as a view into a wider matrix: rows at any address, not continuous.
inline cv::Mat randomDescriptors(Random& random, std::size_t rows, int width) {
  const int left = static_cast<int>(random() % 20), right = static_cast<int>(random() % 3);
  cv::Mat all(static_cast<int>(rows), left + width + right, CV_8UC1);
  for (int r = 0; r < all.rows; ++r)
    for (int c = 0; c < all.cols; ++c) all.at<unsigned char>(r, c) = static_cast<unsigned char>(random());
  return all.colRange(left, left + width);
}

// The second frame shows the first frame's features in another order, moved and with a few bits changed, and others.
// Few bits changed means many equal distances.
inline Input randomInput(Random& random) {
  Input in;
  const std::size_t size1 = oneOf<std::size_t>(random, {1, 2, 3, 8, 15, 16, 17, 40, 130, 300});
  const std::size_t size2 = oneOf<std::size_t>(random, {1, 2, 3, 8, 15, 16, 17, 40, 130, 300});
  const int width = oneOf<int>(random, {16, 32, 64, static_cast<int>(1 + random() % 70), 128, 256, 257});
  in.descriptors1 = randomDescriptors(random, size1, width);
  in.descriptors2 = randomDescriptors(random, size2, width);
  in.keyPoints1.resize(size1);
  in.keyPoints2.resize(size2);
  const float side = oneOf(random, {30.0f, 300.0f, 1e-3f}), noise = oneOf(random, {0.0f, 0.5f});
  for (cv::KeyPoint& k : in.keyPoints1) k.pt = {uniform(random, 0, side), uniform(random, 0, side)};
  for (std::size_t j = 0; j < size2; ++j) {
    cv::Point2f& p = in.keyPoints2[j].pt;
    p = {uniform(random, 0, side), uniform(random, 0, side)};
    if (random() % 5 == 0) continue;
    const std::size_t i = (j * 7 + 3) % size1;
    p = in.keyPoints1[i].pt + cv::Point2f(3 + uniform(random, 0, noise), -2 + uniform(random, 0, noise));
    cv::Mat row = in.descriptors2.row(static_cast<int>(j));
    in.descriptors1.row(static_cast<int>(i)).copyTo(row);
    for (unsigned flips = random() % 4; flips > 0; --flips)
      row.at<unsigned char>(0, static_cast<int>(random() % static_cast<unsigned>(width))) ^= 1 << random() % 8;
  }

  in.params = FBMValidationParams(oneOf(random, {Narrow, Wide, Exhaustive}));
  in.params.refine = random() % 2;
  in.params.searchRadiusSq = oneOf(random, {in.params.searchRadiusSq, 25.0f, 400.0f});
  if (random() % 2) in.params.maxDistance = oneOf<std::uint16_t>(random, {0, 8, 64, 300, 600, 65534, 65535});
  if (random() % 2)
    in.params.ratio =
        oneOf(random, {0.0f, -1.0f, notANumber, 0.5f, 0.999f, 1.0f, 3.0f, infinity, 1e-4f, 64 / 65535.0f, 1e-9f});
  in.params.minMatches = oneOf(random, {in.params.minMatches, -1, 0, 1, 5});
  return in;
}

// Coordinates and circles that arithmetic does not like.
inline void makeHostile(Random& random, Input& in) {
  const auto coordinate = [&] {
    return oneOf(random,
                 {notANumber, infinity, -infinity, 1e19f, -1e20f, FLT_MAX, -FLT_MAX, 0.0f, -0.0f, 1e-45f, 5.0f});
  };
  const unsigned rarity = oneOf(random, {12u, 100u});
  for (KeyPoints* keyPoints : {&in.keyPoints1, &in.keyPoints2})
    for (cv::KeyPoint& k : *keyPoints)
      if (random() % rarity == 0) (random() % 2 ? k.pt.x : k.pt.y) = coordinate();
  for (FBPrediction& p : in.predictions) {
    if (random() % rarity == 0) (random() % 2 ? p.x : p.y) = coordinate();
    if (random() % rarity == 0)
      p.searchRadiusSq = oneOf(random, {notANumber, infinity, -infinity, -1.0f, 0.0f, FLT_MAX, 1e-45f});
  }
}

inline void addPredictions(Random& random, Input& in) {
  const std::size_t size = in.keyPoints1.size();
  in.predictions.resize(oneOf<std::size_t>(random, {0, size, size, size + 1}));
  for (std::size_t i = 0; i < in.predictions.size(); ++i) {
    const cv::Point2f at = in.keyPoints1[i % size].pt;
    in.predictions[i] = {at.x + uniform(random, -5, 5), at.y + uniform(random, -5, 5), uniform(random, 0, 200),
                         oneOf<std::int32_t>(random, {0, 1, 2, 3, 4, 5, -7})};
  }
}

// One key point per row of `bits`, all in one spot; descriptor of 1024 bits with so many leading ones.
inline cv::Mat descriptorsWithOnes(std::initializer_list<int> bits) {
  cv::Mat rows = cv::Mat::zeros(static_cast<int>(bits.size()), 128, CV_8UC1);
  for (int r = 0; r < rows.rows; ++r)
    for (int bit = 0; bit < bits.begin()[r]; ++bit) rows.at<unsigned char>(r, bit / 8) |= 1 << bit % 8;
  return rows;
}

inline Input inputWithOnes(std::initializer_list<int> bits1, std::initializer_list<int> bits2) {
  Input in;
  in.descriptors1 = descriptorsWithOnes(bits1);
  in.descriptors2 = descriptorsWithOnes(bits2);
  in.keyPoints1.resize(bits1.size());
  in.keyPoints2.resize(bits2.size());
  return in;
}

struct Output {
  bool enough = false;
  std::vector<FBMatch> matches;
  std::vector<FBPrediction> predictions;
};

template <class Match>
Output run(const Input& in, const Match& match) {
  Output out;
  out.predictions = in.predictions;
  out.enough =
      match(in.keyPoints1, in.descriptors1, in.keyPoints2, in.descriptors2, in.params, out.matches, out.predictions);
  return out;
}

inline Output run(const Input& in) { return run(in, matchFeatures); }
