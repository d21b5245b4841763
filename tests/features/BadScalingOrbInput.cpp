#include <MirelAlgorithms/features/MirelScalingORB.h>
#include <features/BadImages.h>

#include <climits>
#include <limits>

namespace MirelAlgorithms {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

TEST(BadInput, MirelScalingORB) {
  const cv::Mat image = noise(40, 40, 8), view = oddView(image);
  const cv::KeyPoint good(20, 20, 1, 0);
  BadInput pairs("MirelScalingORB");
  pairs.keep(image, view);
  for (const BadImage& bad : badImages())
    if (!bad.image.empty())
      pairs.expect(
          bad.defect, refused + "MirelScalingORB: image: " + bad.found + " given, 8-bit grey image expected",
          [&] { MirelScalingORB orb(bad.image); }, bad.image);
  pairs.expect("key points of no image",
               refused + "MirelScalingORB::getDescriptors: image: empty given, 8-bit grey image expected",
               [&] { return MirelScalingORB(cv::Mat()).getDescriptors({good}).rows; });
  pairs.expect("no key points of no image", "0", [&] { return MirelScalingORB(cv::Mat()).getDescriptors({}).rows; });
  pairs.expect("view with odd row starts", "true", [&] {
    return same(MirelScalingORB(view).getDescriptors({good}), MirelScalingORB(image).getDescriptors({good}));
  });
  for (const auto& [name, value] : {std::pair("nan", nan), {"inf", infinity}, {"-inf", -infinity}})
    for (const auto& [place, bad] : {std::pair("x", cv::KeyPoint(value, 1, 1, 0)),
                                     {"y", cv::KeyPoint(1, value, 1, 0)},
                                     {"size", cv::KeyPoint(1, 1, value, 0)},
                                     {"angle", cv::KeyPoint(1, 1, 1, value)}}) {
      const std::vector<cv::KeyPoint> keyPoints{good, bad};
      pairs.expect(
          std::string(place) + " is " + name,
          refused + "MirelScalingORB::getDescriptors: keyPoints: " + name +
              " in key point 1 given, finite position, size and angle expected",
          [&] { return MirelScalingORB(image).getDescriptors(keyPoints).rows; }, keyPoints);
    }
}

TEST(BadInput, getNormalizedPatchDescriptor) {
  const cv::Mat image = noise(40, 40, 8), patch = image(cv::Rect(0, 0, 31, 31));
  unsigned char bytes[33] = {};
  BadInput pairs("MirelScalingORB::getNormalizedPatchDescriptor");
  pairs.keep(image, bytes);
  const std::string function = "MirelScalingORB::getNormalizedPatchDescriptor";
  const auto describe = [](const cv::Mat& from, unsigned char* to, int count) {
    MirelScalingORB::getNormalizedPatchDescriptor(from, to, count);
  };
  expectImagesRefused(
      pairs, function, [&](const cv::Mat& bad) { describe(bad, bytes, 32); }, "patch");
  for (const auto& [found, size] : {std::pair("30 x 40", cv::Size(30, 40)), {"40 x 30", cv::Size(40, 30)}})
    pairs.expect(found, refused + function + ": patch: " + found + " pixels given, at least 31 x 31 expected",
                 [&, size = size] {
                   describe(image(cv::Rect({0, 0}, size)), bytes, 32);
                 });
  pairs.expect("null", refused + function + ": descriptor: null given, room for the bytes expected",
               [&] { describe(patch, nullptr, 32); });
  for (const int count : {-1, 33, INT_MAX, INT_MIN})
    pairs.expect(std::to_string(count) + " bytes",
                 refused + function + ": nBytes: " + std::to_string(count) + " given, 0 to 32 expected",
                 [&] { describe(patch, bytes, count); });
  pairs.expect("no bytes", "done", [&] { describe(patch, bytes, 0); });
}

}  // namespace
}  // namespace MirelAlgorithms
