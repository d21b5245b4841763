#include <MirelAlgorithms/frame/internal/Require.h>
#include <MirelAlgorithms/frame/internal/Settings.h>
#include <MirelAlgorithms/smoothing/DenseDepth.h>
#include <MirelAlgorithms/smoothing/internal/Holes.h>
#include <MirelAlgorithms/smoothing/internal/SmoothingSettings.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <opencv2/photo.hpp>
#include <vector>

namespace MirelAlgorithms {
namespace {

// OpenCV adds the differences of two windows, and finds its place in the table of these sums, in int; beyond, it reads
// and writes outside its tables.
void requireSumsInInt(int window, int columns) {
  constexpr int widest = 181;  // 181 * 181 * 65535 is the last below 2^31
  requireRange("smoothDenseZ16", "smoothDenseRadius", window, 1, widest);
  const int sumsPerColumn = 9 * window * window;
  requireRange("smoothDenseZ16", "columns of in", columns, 1, (std::numeric_limits<int>::max)() / sumsPerColumn);
}

void nonLocalMeans(const cv::Mat& depth, cv::Mat& filtered, int window) {
  requireSumsInInt(window, depth.cols);
  const std::vector<float> strengths = {3.0f};  // 16 bits need the form with a vector of strengths, and this norm
  cv::fastNlMeansDenoising(depth, filtered, strengths, window, 3 * window, cv::NORM_L1);
}

void median(const cv::Mat& depth, cv::Mat& filtered, int window) {
  constexpr int narrowestRefused = 7;  // wider ones are refused too, but after a border of half their width is made
  cv::medianBlur(depth, filtered, std::min(window, narrowestRefused));
}

bool shareMemory(const cv::Mat& a, const cv::Mat& b) {
  const std::less<const uchar*> before;
  return before(a.datastart, b.dataend) && before(b.datastart, a.dataend);
}

}  // namespace

bool smoothDenseZ16(const cv::Mat& in, cv::Mat& out, SmartPtr<AttrContainer> attrs) {
  const auto settings = readSettings<DenseSettings>(attrs);
  if (in.empty() || in.dims != 2 || in.type() != CV_16UC1) return false;
  if (settings.window < 1 || settings.window % 2 == 0) return false;

  constexpr int widestMedian = 5;
  const bool isMedian = settings.mode != 1;
  if (isMedian && settings.window <= widestMedian && !shareMemory(in, out)) {
    median(in, out, settings.window);
    clearNearHoles(in, settings.window, out);
  } else {
    cv::Mat filtered;  // of its own: `out` may be `in`, and an error leaves it alone
    (isMedian ? median : nonLocalMeans)(in, filtered, settings.window);
    clearNearHoles(in, settings.window, filtered);
    filtered.copyTo(out);
  }
  return true;
}

}  // namespace MirelAlgorithms
