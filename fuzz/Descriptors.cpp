/// Descriptors of features that lie anywhere: rows belong together, the fixed-point kind equals its definition, errors
/// leave the outputs alone.
#include <MirelAlgorithms/features/Descriptors.h>
#include <support/Matrices.h>

#include "Inputs.h"

namespace {

using MirelAlgorithms::same;

// Rows do not depend on their neighbours, and positions that fit no integer see nothing but zeros.
void checkFixedPoint(const cv::Mat& image, const cv::Mat& features, const cv::Mat& descriptors,
                     const fuzz::Settings& settings) {
  MIREL_CHECK(descriptors.cols == 16 || descriptors.empty());
  MIREL_CHECK(descriptors.rows == features.rows);
  for (int i = 0; i < features.rows; ++i) {
    cv::Mat one = features.row(i), descriptor;
    MIREL_CHECK(MirelAlgorithms::retrieveDescriptors(image, one, descriptor, settings));
    MIREL_CHECK(same(descriptor, descriptors.row(i)));
    const auto fits = [](float v) { return v >= -2147483648.0f && v < 2147483648.0f; };
    const float* f = features.ptr<float>(i);
    MIREL_CHECK((fits(f[0]) && fits(f[1])) || cv::countNonZero(descriptor) == 0);
  }
}

// Each row that is left is one of the rows that came in; some kinds write the angle.
void checkKept(const cv::Mat& before, const cv::Mat& features) {
  int source = 0;
  for (int i = 0; i < features.rows; ++i, ++source)
    while (source < before.rows && std::memcmp(before.ptr(source), features.ptr(i), 3 * sizeof(float)) != 0) ++source;
  MIREL_CHECK(source <= before.rows);
}

fuzz::ExactMatrix anyFeatures(FuzzedDataProvider& data, const cv::Size& image) {
  const bool odd = fuzz::rarely(data);
  const int type = odd ? data.PickValueInArray({CV_32FC1, CV_32FC2, CV_64FC(5), CV_8UC1}) : CV_32FC(5);
  fuzz::ExactMatrix features(data, fuzz::upTo(data, 24), odd ? 2 : 1, type);
  cv::RNG random(data.ConsumeIntegral<std::uint16_t>());
  const float most[] = {image.width + 10.0f, image.height + 10.0f, 40.0f, 720.0f, 1.0f};
  for (int i = 0; i < features.mat.rows && !odd; ++i)
    for (int k = 0; k < 5; ++k)
      features.mat.ptr<float>(i)[k] =
          data.ConsumeIntegralInRange(0, 31) > 28 ? anyReal<float>(data) : random.uniform(-10.0f, most[k]);
  features.keep();
  return features;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  FuzzedDataProvider data(bytes, size);
  const fuzz::Settings settings =
      fuzz::anySettings(data, "retrieveDescriptors",
                        {{L"PatchSize", -1, 12}, {L"DescLengthBytes", 16, 16}, {L"FBMEnhancement", -1, 100000}});
  settings->set(L"FBMType", data.ConsumeIntegralInRange(0, 3));
  settings->set(L"FBMDescriptorType", data.ConsumeIntegralInRange(0, 5));
  if (data.ConsumeBool()) settings->set(L"DescLengthBytes", 1 << data.ConsumeIntegralInRange(0, 7));
  const auto image = fuzz::anyImage(data, 96);
  const auto given = anyFeatures(data, image.mat.size());
  cv::Mat features = given.mat, descriptors(2, 2, CV_8UC1);
  const cv::Mat before = descriptors;
  try {
    MIREL_CHECK(MirelAlgorithms::retrieveDescriptors(image.mat, features, descriptors, settings));
    MIREL_CHECK(features.rows == descriptors.rows && (descriptors.empty() || descriptors.type() == CV_8UC1));
    checkKept(given.mat, features);
    if (fuzz::valueOf(settings, L"FBMType", 0) == 0) checkFixedPoint(image.mat, features, descriptors, settings);
  } catch (const std::invalid_argument&) {
    MIREL_CHECK(features.data == given.mat.data && descriptors.data == before.data);
  } catch (const cv::Exception&) {
    MIREL_CHECK(fuzz::valueOf(settings, L"FBMType", 0) != 0);
    MIREL_CHECK(features.data == given.mat.data && descriptors.data == before.data);
  }
  MIREL_CHECK(image.untouched() && given.untouched());
  return 0;
}
