/// What tests of texture matching share.
#pragma once

#include <support/Matrices.h>
#include <support/SettingsOf.h>

#include <features/DetectionTest.h>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

namespace MirelAlgorithms {

using Points = std::vector<cv::Vec2f>;

/// The image as a camera sees it that has moved and turned a little.
inline cv::Mat seenAside(const cv::Mat& image, float by) {
  const float w = static_cast<float>(image.cols), h = static_cast<float>(image.rows);
  const cv::Point2f corners[] = {{0, 0}, {w, 0}, {w, h}, {0, h}}, moved[] = {{by, by}, {w, 0}, {w - by, h}, {0, h}};
  cv::Mat view;
  cv::warpPerspective(image, view, cv::getPerspectiveTransform(corners, moved), image.size());
  return view;
}

}  // namespace MirelAlgorithms
