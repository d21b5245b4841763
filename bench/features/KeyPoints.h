/// Key points to describe.
#pragma once

#include <opencv2/features2d.hpp>
#include <vector>

namespace bench {

inline std::vector<cv::KeyPoint> orbKeyPoints(const cv::Mat& image, int count) {
  std::vector<cv::KeyPoint> keyPoints;
  cv::ORB::create(count)->detect(image, keyPoints);
  return keyPoints;
}

}  // namespace bench
