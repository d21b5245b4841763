// Corners of a photograph by the fixed-point pipeline, and a descriptor for each.
//
//   features IMAGE
#include <MirelAlgorithms/MirelAlgorithms.h>

#include <cstdio>
#include <opencv2/imgcodecs.hpp>

using namespace MirelAlgorithms;

namespace {

void print(const cv::Mat& image, const SmartPtr<AttrContainer>& settings) {
  cv::Mat features, descriptors;
  retrieveFeatures(image, features, settings, false);
  retrieveDescriptors(image, features, descriptors, settings);
  std::printf("%d features, descriptors of %d bits\n", features.rows, 8 * descriptors.cols);
  for (int i = 0; i < features.rows && i < 3; ++i) {
    const float* f = features.ptr<float>(i);  // x, y, size, angle, response
    std::printf("at %6.2f, %6.2f px, response %.3f:", f[0], f[1], f[4]);
    for (int byte = 0; byte < descriptors.cols; ++byte) std::printf(" %02x", descriptors.at<uchar>(i, byte));
    std::printf("\n");
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: features IMAGE\n");
    return 2;
  }
  const cv::Mat image = cv::imread(argv[1], cv::IMREAD_GRAYSCALE);
  if (image.empty()) {
    std::fprintf(stderr, "features: %s is no readable image\n", argv[1]);
    return 2;
  }

  const SmartPtr<AttrContainer> settings(new AttrContainer());
  settings->set(L"FBMFpgaQuantized", true);  // integer arithmetic of a hardware detector
  settings->set(L"FBMnCells", 4);            // 4 x 4 cells share the budget
  settings->set(L"FBMnFeatures", 800);
  try {
    print(image, settings);
  } catch (const std::exception& error) {  // a setting or an image that cannot be used
    std::fprintf(stderr, "features: %s\n", error.what());
    return 1;
  }
}
