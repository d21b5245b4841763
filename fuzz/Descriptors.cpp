/// Descriptors of features that lie anywhere: rows belong together, the fixed-point kind describes each by itself,
/// errors leave the outputs alone.
#include <MirelAlgorithms/features/Descriptors.h>
#include <support/Matrices.h>

#include "Inputs.h"

namespace {

// Rows do not depend on their neighbours, and positions that fit no integer see nothing but zeros.
void checkFixedPoint(const cv::Mat& image, const cv::Mat& features, const cv::Mat& descriptors,
                     const fuzz::Settings& settings) {
  for (int i = 0; i < features.rows; ++i) {
    cv::Mat one = features.row(i), descriptor;
    MIREL_CHECK(MirelAlgorithms::retrieveDescriptors(image, one, descriptor, settings));
    MIREL_CHECK(descriptor.cols == 16 && MirelAlgorithms::same(descriptor, descriptors.row(i)));
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
  fuzz::ExactMatrix features(data, fuzz::upTo(data, 24), 1, CV_32FC(5));
  cv::RNG random(data.ConsumeIntegral<std::uint16_t>());
  const float most[] = {image.width + 10.0f, image.height + 10.0f, 40.0f, 720.0f, 1.0f};
  for (int i = 0; i < features.mat.rows; ++i)
    for (int k = 0; k < 5; ++k)
      features.mat.ptr<float>(i)[k] =
          data.ConsumeIntegralInRange(0, 31) > 28 ? anyReal<float>(data) : random.uniform(-10.0f, most[k]);
  features.keep();
  return features;
}

}  // namespace

void feed(FuzzedDataProvider& data) {
  const fuzz::Settings settings = fuzz::anySettings(data, "retrieveDescriptors");
  const int kind = data.ConsumeIntegralInRange(0, 3);
  settings->set(L"FBMType", kind);
  settings->set(L"FBMDescriptorType", data.ConsumeIntegralInRange(0, 5));
  if (data.ConsumeBool()) settings->set(L"DescLengthBytes", 1 << data.ConsumeIntegralInRange(0, 7));
  const auto image = fuzz::anyImage(data, 96);
  const auto given = anyFeatures(data, image.mat.size());
  cv::Mat features = given.mat, descriptors;
  const End end =
      endOf([&] { MIREL_CHECK(MirelAlgorithms::retrieveDescriptors(image.mat, features, descriptors, settings)); });
  MIREL_CHECK(image.untouched() && given.untouched());
  if (end == End::well) {
    MIREL_CHECK(features.rows == descriptors.rows && (descriptors.empty() || descriptors.type() == CV_8UC1));
    checkKept(given.mat, features);
    if (kind == 0) checkFixedPoint(image.mat, features, descriptors, settings);
  } else {
    MIREL_CHECK(end == End::refused || (end == End::openCvError && kind != 0));
    MIREL_CHECK(features.data == given.mat.data && descriptors.empty());
  }
}
