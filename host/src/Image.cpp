#include <MirelCore/Image.h>

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

namespace MirelCore {
namespace {

constexpr double strengthPerClip = 30000.0;
constexpr int tilesPerSide = 8;
constexpr int windowHalf = 5;

cv::Mat toGrey8(const cv::Mat& source) {
  const int channels = source.channels();
  const bool depthFits = source.depth() == CV_8U || source.depth() == CV_16U;
  if (source.empty() || source.dims != 2 || !depthFits || (channels != 1 && channels != 3 && channels != 4))
    throw std::invalid_argument("enhance: source: 8- or 16-bit image of 1, 3 or 4 channels expected");
  cv::Mat grey = source;
  if (channels != 1) cv::cvtColor(source, grey, channels == 3 ? cv::COLOR_BGR2GRAY : cv::COLOR_BGRA2GRAY);
  cv::Mat grey8;
  grey.convertTo(grey8, CV_8U, grey.depth() == CV_16U ? 1.0 / 256.0 : 1.0);
  return grey8;
}

}  // namespace

void enhance(const cv::Mat& source, cv::Mat& destination, int strength, const std::vector<int>& /*parameters*/) {
  const cv::Mat grey = toGrey8(source);
  cv::Mat result = grey;
  if (strength > 0) {
    const cv::Size tiles(std::min(tilesPerSide, grey.cols), std::min(tilesPerSide, grey.rows));
    result = cv::Mat();
    cv::createCLAHE(strength / strengthPerClip, tiles)->apply(grey, result);
  }
  destination = result;
}

void subPixel(const std::vector<cv::Mat>& images, int /*mode*/, std::vector<cv::KeyPoint>& keyPoints) {
  if (images.empty() || images[0].empty() || images[0].type() != CV_8UC1) return;
  const cv::Mat& image = images[0];

  std::vector<std::size_t> inside;
  std::vector<cv::Point2f> corners;
  for (std::size_t i = 0; i < keyPoints.size(); ++i) {
    const cv::Point2f& p = keyPoints[i].pt;
    const bool fits = p.x >= windowHalf + 1 && p.y >= windowHalf + 1 && p.x < image.cols - windowHalf - 1 &&
                      p.y < image.rows - windowHalf - 1;
    if (!fits) continue;
    inside.push_back(i);
    corners.push_back(p);
  }
  if (corners.empty()) return;

  const cv::TermCriteria criteria(cv::TermCriteria::EPS | cv::TermCriteria::COUNT, 30, 0.01);
  cv::cornerSubPix(image, corners, cv::Size(windowHalf, windowHalf), cv::Size(-1, -1), criteria);
  for (std::size_t i = 0; i < inside.size(); ++i) keyPoints[inside[i]].pt = corners[i];
}

}  // namespace MirelCore
