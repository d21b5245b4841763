// Matches two camera frames and prints how the image moved.
//
//   match_two_frames FRAME1 FRAME2
#include <MirelAlgorithms/MirelAlgorithms.h>

#include <cstdio>
#include <opencv2/imgcodecs.hpp>

using namespace MirelAlgorithms;

namespace {

struct Frame {
  std::vector<cv::KeyPoint> keyPoints;
  cv::Mat descriptors;
};

Frame describe(const cv::Mat& image, const SmartPtr<AttrContainer>& settings) {
  cv::Mat features;
  Frame frame;
  retrieveFeatures(image, features, settings, false);
  retrieveDescriptors(image, features, frame.descriptors, settings);
  for (int i = 0; i < features.rows; ++i) {
    const float* f = features.ptr<float>(i);  // x, y, size, angle, response
    frame.keyPoints.emplace_back(f[0], f[1], f[2], f[3], f[4]);
  }
  return frame;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: match_two_frames FRAME1 FRAME2\n");
    return 2;
  }
  const cv::Mat image1 = cv::imread(argv[1], cv::IMREAD_GRAYSCALE);
  const cv::Mat image2 = cv::imread(argv[2], cv::IMREAD_GRAYSCALE);
  if (image1.empty() || image2.empty()) {
    std::fprintf(stderr, "match_two_frames: %s is no readable image\n", argv[image1.empty() ? 1 : 2]);
    return 2;
  }

  // Settings are read by name; what is not set has its default (`mirel settings` lists them all).
  const SmartPtr<AttrContainer> settings(new AttrContainer());
  settings->set(L"FBMnFeatures", 1200);

  const Frame frame1 = describe(image1, settings);
  const Frame frame2 = describe(image2, settings);

  std::vector<FBMatch> matches;
  std::vector<FBPrediction> predictions;
  const bool enough = matchFeatures(frame1.keyPoints, frame1.descriptors, frame2.keyPoints, frame2.descriptors,
                                    FBMValidationParams(Narrow), matches, predictions);

  std::vector<cv::Vec2f> from, to;
  for (const FBMatch& match : matches) {
    from.emplace_back(frame1.keyPoints[match.queryIdx].pt);
    to.emplace_back(frame2.keyPoints[match.trainIdx].pt);
  }
  const MotionEstimate motion = MotionEstimate::estimate(from, to, {});

  std::printf("%zu and %zu features, %zu matches\n", frame1.keyPoints.size(), frame2.keyPoints.size(), matches.size());
  if (motion.isValid())
    std::printf("moved by %.2f px, residual %.2f px\n", motion.translation, motion.meanInlierResidual);
  return enough && motion.isValid() ? 0 : 1;
}
