/// Two frames of binary features for the benchmarks: seven of ten features of the second show one of the first, moved
/// by some pixels and with a few bits changed.
#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

namespace bench {

struct Frames {
  std::vector<cv::KeyPoint> keyPoints1, keyPoints2;
  cv::Mat descriptors1, descriptors2;
};

inline cv::Mat randomDescriptors(std::mt19937& random, int rows, int bits) {
  cv::Mat descriptors(rows, bits / 8, CV_8UC1);
  std::generate(descriptors.begin<unsigned char>(), descriptors.end<unsigned char>(),
                [&] { return static_cast<unsigned char>(random()); });
  return descriptors;
}

inline std::vector<cv::KeyPoint> randomKeyPoints(std::mt19937& random, int count) {
  std::uniform_real_distribution<float> x(0, 640), y(0, 480);
  std::vector<cv::KeyPoint> keyPoints(static_cast<std::size_t>(count));
  for (cv::KeyPoint& keyPoint : keyPoints) keyPoint.pt = {x(random), y(random)};
  return keyPoints;
}

/// @param features  per frame, spread over 640 x 480 pixels
inline Frames makeFrames(int features, int bits) {
  std::mt19937 random(1);
  Frames frames{randomKeyPoints(random, features), randomKeyPoints(random, features),
                randomDescriptors(random, features, bits), randomDescriptors(random, features, bits)};
  std::vector<int> order(static_cast<std::size_t>(features));
  std::iota(order.begin(), order.end(), 0);
  std::shuffle(order.begin(), order.end(), random);
  std::uniform_real_distribution<float> noise(-0.5f, 0.5f);
  for (int i = 0; i < features * 7 / 10; ++i) {
    const int j = order[static_cast<std::size_t>(i)];
    const cv::Point2f moved(8 + noise(random), -5 + noise(random));
    frames.keyPoints2[static_cast<std::size_t>(j)].pt = frames.keyPoints1[static_cast<std::size_t>(i)].pt + moved;
    cv::Mat row = frames.descriptors2.row(j);
    frames.descriptors1.row(i).copyTo(row);
    for (int flips = bits / 16; flips > 0; --flips)
      row.data[random() % static_cast<unsigned>(row.cols)] ^= static_cast<unsigned char>(1 << random() % 8);
  }
  return frames;
}

}  // namespace bench
