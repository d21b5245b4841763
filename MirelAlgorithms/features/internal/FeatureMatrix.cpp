#include <MirelAlgorithms/features/internal/FeatureMatrix.h>
#include <MirelAlgorithms/frame/internal/Require.h>

namespace MirelAlgorithms {

static_assert(sizeof(Feature) == 5 * sizeof(float));

void requireFeatureMatrix(const char* function, const char* argument, const cv::Mat& features) {
  if (features.empty()) return;
  if (features.dims == 2 && features.cols == 1 && features.type() == CV_32FC(5)) return;
  const std::string size = features.dims == 2 ? std::to_string(features.rows) + " x " + std::to_string(features.cols)
                                              : std::to_string(features.dims) + "-dimensional";
  refuse(function, argument, size + " " + describe(features), "N x 1 CV_32FC5");
}

cv::Mat toFeatureMatrix(const std::vector<cv::KeyPoint>& keyPoints) {
  if (keyPoints.empty()) return {};
  cv::Mat features(static_cast<int>(keyPoints.size()), 1, CV_32FC(5));
  Feature* feature = features.ptr<Feature>();
  for (const cv::KeyPoint& k : keyPoints) *feature++ = {k.pt.x, k.pt.y, k.size, k.angle, k.response};
  return features;
}

std::vector<cv::KeyPoint> toKeyPoints(const cv::Mat& features) {
  std::vector<cv::KeyPoint> keyPoints;
  if (features.empty()) return keyPoints;
  keyPoints.reserve(features.rows);
  for (int i = 0; i < features.rows; ++i) {
    const Feature& f = *features.ptr<Feature>(i);
    keyPoints.emplace_back(f.x, f.y, f.size, f.angle, f.response);
  }
  return keyPoints;
}

}  // namespace MirelAlgorithms
