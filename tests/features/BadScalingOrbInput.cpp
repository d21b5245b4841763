#include <MirelAlgorithms/features/MirelScalingORB.h>
#include <features/BadImages.h>

#include <climits>
#include <cmath>

namespace MirelAlgorithms {
namespace {

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
  const std::string refusal = refused + "MirelScalingORB::getDescriptors: ";
  pairs.expect("key points of no image", refusal + "image: empty given, 8-bit grey image expected",
               [&] { MirelScalingORB(cv::Mat()).getDescriptors({good}); });
  pairs.expect("no key points of no image", "[32 x 0]",
               [] { return MirelScalingORB(cv::Mat()).getDescriptors({}).size(); });
  pairs.expect("view with odd row starts", "true", [&] {
    return same(MirelScalingORB(view).getDescriptors({good}), MirelScalingORB(image).getDescriptors({good}));
  });
  for (const auto& [found, value] : {std::pair("nan", NAN), {"-inf", -INFINITY}})
    for (const cv::KeyPoint& bad : {cv::KeyPoint(value, 1, 1, 0), cv::KeyPoint(1, value, 1, 0),
                                    cv::KeyPoint(1, 1, value, 0), cv::KeyPoint(1, 1, 1, value)}) {
      std::ostringstream defect;
      defect << bad.pt << bad.size << ' ' << bad.angle;
      pairs.expect(defect.str(),
                   refusal + "keyPoints: " + found + " in key point 1 given, finite position, size and angle expected",
                   [&] {
                     MirelScalingORB(image).getDescriptors({good, bad});
                   });
    }
}

TEST(BadInput, getNormalizedPatchDescriptor) {
  const cv::Mat image = noise(40, 40, 8);
  unsigned char bytes[33] = {};
  const std::string function = "MirelScalingORB::getNormalizedPatchDescriptor";
  BadInput pairs(function.c_str());
  pairs.keep(image, bytes);
  const auto describe = [&](const cv::Mat& from) { MirelScalingORB::getNormalizedPatchDescriptor(from, bytes, 32); };
  expectImagesRefused(pairs, function, describe, "patch");
  for (const auto& [found, size] : {std::pair("30 x 40", cv::Size(30, 40)), {"40 x 30", cv::Size(40, 30)}})
    pairs.expect(found, refused + function + ": patch: " + found + " pixels given, at least 31 x 31 expected",
                 [&, size = size] {
                   describe(image(cv::Rect({0, 0}, size)));
                 });
  pairs.expect("null", refused + function + ": descriptor: null given, room for the bytes expected",
               [&] { MirelScalingORB::getNormalizedPatchDescriptor(image, nullptr, 32); });
  expectNumbersRefused(pairs, function, "nBytes", {-1, 33, INT_MIN}, "0 to 32",
                       [&](int count) { MirelScalingORB::getNormalizedPatchDescriptor(image, bytes, count); });
  pairs.expect("no bytes", "done", [&] { MirelScalingORB::getNormalizedPatchDescriptor(image, bytes, 0); });
}

}  // namespace
}  // namespace MirelAlgorithms
