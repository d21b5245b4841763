/// What functions of features refuse, and what they take as it is.
#pragma once

#include <features/FeatureTest.h>
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
          {"signed image", zeros(CV_8SC1), "CV_8SC1"},
          {"floating-point image", zeros(CV_32FC1), "CV_32FC1"},
          {"volume", cv::Mat(3, cube, CV_8UC1, cv::Scalar(0)), "CV_8UC1"}};
}

template <class Call>
void expectImagesRefused(BadInput& pairs, const std::string& function, const Call& call,
                         const char* argument = "image") {
  for (const BadImage& bad : badImages())
    pairs.expect(
        bad.defect, refused + function + ": " + argument + ": " + bad.found + " given, 8-bit grey image expected",
        [&] { return call(bad.image); }, bad.image);
}

/// Numbers that an argument must not be.
template <class Call>
void expectNumbersRefused(BadInput& pairs, const std::string& function, const std::string& argument,
                          const std::vector<int>& numbers, const std::string& wanted, const Call& call) {
  for (const int number : numbers) {
    const std::string found = std::to_string(number);
    pairs.expect(argument + " " + found,
                 refused + function + ": " + argument + ": " + found + " given, " + wanted + " expected",
                 [&] { return call(number); });
  }
}

/// What makes no difference to the output of a call with an image and settings: how the image lies in memory, and
/// settings of types that are not read.
template <class Output>
void expectNoDifference(BadInput& pairs, const cv::Mat& image, const Output& output, const Settings& usual = {},
                        const Settings& odd = settingsOfOtherTypes(), const std::string& path = "") {
  const cv::Mat view = oddView(image), expected = output(image, usual);
  pairs.expect(
      "view with odd row starts" + path, "true", [&] { return same(output(view, usual), expected); }, view);
  pairs.expect("settings of other types" + path, "true", [&] { return same(output(image, odd), expected); });
}

}  // namespace MirelAlgorithms
