#include <MirelAlgorithms/frame/internal/Require.h>
#include <MirelAlgorithms/frame/internal/Settings.h>
#include <MirelAlgorithms/smoothing/DenseDepth.h>
#include <MirelAlgorithms/smoothing/internal/SmoothingSettings.h>

#include <algorithm>
#include <limits>
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

// OpenCV adds the differences of two windows, and finds its place in the table of these sums, in int; beyond, it reads
// and writes outside its tables.
void requireSumsInInt(int window, int columns) {
  constexpr int widest = 181;  // 181 * 181 * 65535 is the last below 2^31
  requireRange("smoothDenseZ16", "smoothDenseRadius", window, 1, widest);
  const int sumsPerColumn = 9 * window * window;
  requireRange("smoothDenseZ16", "columns of in", columns, 1, (std::numeric_limits<int>::max)() / sumsPerColumn);
}

void filter(const cv::Mat& depth, cv::Mat& filtered, const DenseSettings& settings) {
  constexpr float strength = 3.0f;
  if (settings.mode == 1) {
    requireSumsInInt(settings.window, depth.cols);
    cv::fastNlMeansDenoising(depth, filtered, std::vector<float>{strength}, settings.window, 3 * settings.window,
                             cv::NORM_L1);  // 16 bits need the form with a vector of strengths, and this norm
  } else {
    constexpr int narrowestRefused = 7;  // wider ones are refused too, but after a border of half their width is made
    cv::medianBlur(depth, filtered, std::min(settings.window, narrowestRefused));
  }
}

}  // namespace

bool smoothDenseZ16(const cv::Mat& in, cv::Mat& out, SmartPtr<AttrContainer> attrs) {
  const auto settings = readSettings<DenseSettings>(attrs);
  if (in.empty() || in.type() != CV_16UC1) return false;
  if (settings.window < 1 || settings.window % 2 == 0) return false;

  cv::Mat filtered;  // of its own: `out` may be `in`, and an error leaves it alone
  filter(in, filtered, settings);
  const cv::Mat holes = nearHoles(in, settings.window);
  if (!holes.empty()) filtered.setTo(0, holes);
  filtered.copyTo(out);
  return true;
}

}  // namespace MirelAlgorithms
