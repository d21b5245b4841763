// Features that jump farther than the search radius are found again, because their tracks say where they will be.
#include <MirelAlgorithms/MirelAlgorithms.h>

#include <cstdio>
#include <opencv2/core.hpp>

using namespace MirelAlgorithms;

namespace {

constexpr int kFeatures = 60;

// What a camera sees that turns at a steady pace: random points, 150 px farther right and 40 px lower at each time.
std::vector<cv::KeyPoint> seenAt(int time) {
  cv::RNG random(1);
  std::vector<cv::KeyPoint> points;
  for (int i = 0; i < kFeatures; ++i) {
    const auto x = static_cast<float>(random.uniform(0, 600)), y = static_cast<float>(random.uniform(0, 400));
    points.emplace_back(x + 150.0f * static_cast<float>(time), y + 40.0f * static_cast<float>(time), 15.0f);
  }
  return points;
}

std::vector<FBPrediction> predictedAt(std::uint64_t time, float radius) {
  std::vector<FeaturePrediction> tracks(kFeatures);
  for (int past = 1; past < 3; ++past) {
    const std::vector<cv::KeyPoint> points = seenAt(past);
    for (std::size_t i = 0; i < tracks.size(); ++i)
      tracks[i].update(SVec2d(points[i].pt.x, points[i].pt.y), static_cast<std::uint64_t>(past));
  }
  std::vector<FBPrediction> predictions;
  for (const FeaturePrediction& track : tracks) {
    const SVec2d there = track.predictPosition(time);
    predictions.push_back({static_cast<float>(there.x), static_cast<float>(there.y), radius * radius, 2});
  }
  return predictions;
}

std::size_t match(std::vector<FBPrediction> predictions) {
  cv::Mat descriptors(kFeatures, 16, CV_8UC1);  // 128 random bits each, the same in both frames
  cv::RNG(2).fill(descriptors, cv::RNG::UNIFORM, 0, 256);
  std::vector<FBMatch> matches;
  matchFeatures(seenAt(2), descriptors, seenAt(3), descriptors, FBMValidationParams(Narrow), matches, predictions);
  return matches.size();
}

}  // namespace

int main() {
  const std::size_t unguided = match({}), guided = match(predictedAt(3, 20.0f));
  std::printf("around where they were, within 120 px:  %zu of %d found\n", unguided, kFeatures);
  std::printf("around where tracks lead, within 20 px: %zu of %d found\n", guided, kFeatures);
  return guided > unguided ? 0 : 1;
}
