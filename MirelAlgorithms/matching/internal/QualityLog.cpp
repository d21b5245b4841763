#include <MirelAlgorithms/frame/internal/Log.h>
#include <MirelAlgorithms/matching/internal/QualityLog.h>

#include <cmath>

namespace MirelAlgorithms {
namespace {

double distance(double x1, double y1, const cv::Point2f& p) {
  return std::sqrt((x1 - p.x) * (x1 - p.x) + (y1 - p.y) * (y1 - p.y));
}

}  // namespace

void matchQualityLog(const std::vector<cv::KeyPoint>& keyPoints1, const std::vector<cv::KeyPoint>& keyPoints2,
                     const std::vector<FBMatch>& matches, const std::vector<FBPrediction>& predictions) {
  if (!MirelCore::shouldLog(LogLevel::matchStatistics) || matches.empty()) return;
  double withoutPrediction = 0, withPrediction = 0;
  int predicted = 0;
  for (const FBMatch& match : matches) {
    const auto i = static_cast<std::size_t>(match.queryIdx), j = static_cast<std::size_t>(match.trainIdx);
    const cv::Point2f &from = keyPoints1[i].pt, &to = keyPoints2[j].pt;
    withoutPrediction += distance(from.x, from.y, to);
    withPrediction += distance(match.predictedX, match.predictedY, to);
    predicted += predictions[i].state >= 2;
  }
  const double count = static_cast<double>(matches.size());
  MIREL_LOG("FeatureMatching.cpp", "MirelAlgorithms::matchQualityLog", LogLevel::diagnostic,
            L"num matches (%4d - %4d) : %4d predicted %4d  mean dist no prediction: %10.4f   "
            L"mean dist with prediction: %10.4f",
            static_cast<int>(keyPoints1.size()), static_cast<int>(keyPoints2.size()), static_cast<int>(matches.size()),
            predicted, withoutPrediction / count, withPrediction / count);
}

}  // namespace MirelAlgorithms
