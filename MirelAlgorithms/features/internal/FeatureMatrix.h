/// Key points as a feature matrix, and back: N x 1, CV_32FC(5), each element x, y, size, angle, response.
#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>
#include <vector>

namespace MirelAlgorithms {

/// One feature; the element of a feature matrix.
struct Feature {
  float x, y, size, angle, response;
};

/// Refuses what is neither empty nor an N x 1 CV_32FC(5) matrix. Views that are not continuous are fine.
void requireFeatureMatrix(const char* function, const char* argument, const cv::Mat& features);

/// The first five fields of each key point; an empty matrix without key points.
cv::Mat toFeatureMatrix(const std::vector<cv::KeyPoint>& keyPoints);

/// Key points with these five fields and defaults in the others.
std::vector<cv::KeyPoint> toKeyPoints(const cv::Mat& features);

}  // namespace MirelAlgorithms
