/// Images that no function of features takes.
#pragma once

#include <support/BadInput.h>
#include <support/Matrices.h>

namespace MirelAlgorithms {

/// An image that is not 8-bit grey, and how refusals call it.
struct BadImage {
  const char* defect;
  cv::Mat image;
  const char* found;
};

inline std::vector<BadImage> badImages() {
  static const int cube[] = {4, 4, 4};
  const auto zeros = [](int type) { return cv::Mat(40, 50, type, cv::Scalar::all(0)); };
  return {{"no image", {}, "empty"},
          {"image without rows", cv::Mat(0, 50, CV_8UC1), "empty"},
          {"colour image", zeros(CV_8UC3), "CV_8UC3"},
          {"image with alpha", zeros(CV_8UC4), "CV_8UC4"},
          {"signed image", zeros(CV_8SC1), "CV_8SC1"},
          {"16-bit image", zeros(CV_16UC1), "CV_16UC1"},
          {"floating-point image", zeros(CV_32FC1), "CV_32FC1"},
          {"volume", cv::Mat(3, cube, CV_8UC1, cv::Scalar(0)), "CV_8UC1"}};
}

template <class Call>
inline void expectImagesRefused(BadInput& pairs, const std::string& function, const Call& call,
                                const char* argument = "image") {
  for (const BadImage& bad : badImages())
    pairs.expect(
        bad.defect, refused + function + ": " + argument + ": " + bad.found + " given, 8-bit grey image expected",
        [&] { return call(bad.image); }, bad.image);
}

}  // namespace MirelAlgorithms
