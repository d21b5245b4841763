#include <MirelAlgorithms/frame/internal/Settings.h>
#include <MirelAlgorithms/smoothing/DenseDepth.h>
#include <MirelAlgorithms/smoothing/internal/SmoothingSettings.h>

#include <opencv2/imgproc.hpp>
#include <opencv2/photo.hpp>
#include <vector>

namespace MirelAlgorithms {
namespace {

// 255 where a window around the pixel contains a 0; empty when there is none at all.
cv::Mat nearHoles(const cv::Mat& depth, int window) {
  cv::Mat holes = depth < 1;
  if (cv::countNonZero(holes) == 0) return {};
  cv::dilate(holes, holes, cv::Mat::ones(window, window, CV_8UC1));
  return holes;
}

void filter(const cv::Mat& depth, cv::Mat& filtered, const DenseSettings& settings) {
  constexpr float strength = 3.0f;
  if (settings.mode == 1)  // 16 bits need the form with a vector of strengths, and this norm
    cv::fastNlMeansDenoising(depth, filtered, std::vector<float>{strength}, settings.window, 3 * settings.window,
                             cv::NORM_L1);
  else
    cv::medianBlur(depth, filtered, settings.window);
}

}  // namespace

bool smoothDenseZ16(const cv::Mat& in, cv::Mat& out, SmartPtr<AttrContainer> attrs) {
  const auto settings = readSettings<DenseSettings>(attrs);
  if (in.empty() || in.type() != CV_16UC1) return false;
  if (settings.window < 1 || settings.window % 2 == 0) return false;

  const cv::Mat holes = nearHoles(in, settings.window);
  cv::Mat filtered;  // of its own, so that an error leaves `out` alone
  filter(in, filtered, settings);
  if (!holes.empty()) filtered.setTo(0, holes);
  filtered.copyTo(out);
  return true;
}

}  // namespace MirelAlgorithms
