// Features of the first photograph that are found again in the others.
//
//   texture IMAGE IMAGE ...
#include <MirelAlgorithms/MirelAlgorithms.h>

#include <cstdio>
#include <opencv2/imgcodecs.hpp>

using namespace MirelAlgorithms;

namespace {

int print(const std::vector<cv::Mat>& images, const SmartPtr<AttrContainer>& settings) {
  std::vector<cv::Vec2f> here, there;
  textureExtractAndMatch(images[0], images[1], here, there, settings);
  std::printf("%zu matches with the second image\n", here.size());
  for (std::size_t i = 0; i < here.size() && i < 3; ++i)
    std::printf("%6.1f, %6.1f px is at %6.1f, %6.1f px\n", here[i][0], here[i][1], there[i][0], there[i][1]);

  std::vector<MultiMatch> found;
  textureMultiMatch(images, found, settings);
  std::printf("%zu features found again\n", found.size());
  for (int times = static_cast<int>(images.size()); times > 1; --times) {
    int count = 0;
    for (const MultiMatch& feature : found) count += feature.multiplicity == times;
    std::printf("  in %d images: %d\n", times, count);
  }
  return here.empty() ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: texture IMAGE IMAGE ...\n");
    return 2;
  }
  std::vector<cv::Mat> images;
  for (int i = 1; i < argc; ++i) {
    images.push_back(cv::imread(argv[i]));
    if (images.back().empty()) {
      std::fprintf(stderr, "texture: %s is no readable image\n", argv[i]);
      return 2;
    }
  }

  const SmartPtr<AttrContainer> settings(new AttrContainer());
  settings->set(L"txmMaxKeyDist", 300.0);  // pixels between the places of a match
  settings->set(L"txmMinMultipicity", 2);  // found in one other image at least
  try {
    return print(images, settings);
  } catch (const std::exception& error) {  // a setting or an image that cannot be used
    std::fprintf(stderr, "texture: %s\n", error.what());
    return 1;
  }
}
