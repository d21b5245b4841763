/// Detection by every detector, with random cells and budgets, in both forms: budgets are kept, positions lie in the
/// image, errors leave the outputs alone.
#include <MirelAlgorithms/features/FeatureExtraction.h>

#include "Inputs.h"

namespace {

using fuzz::valueOf;

// Cells are floor(length / cells) long; half a cell that is left over makes one more of them.
std::size_t mostFeatures(const cv::Mat& image, const fuzz::Settings& settings) {
  const int cells = valueOf(settings, L"FBMnCells", 3), budget = valueOf(settings, L"FBMnFeatures", 2000);
  const auto along = [cells](int length) { return (length - length / cells / 2 - 1) / (length / cells) + 1; };
  return static_cast<std::size_t>(std::max(budget / (cells * cells), 0)) * along(image.cols) * along(image.rows);
}

}  // namespace

void feed(FuzzedDataProvider& data) {
  const fuzz::Settings settings = fuzz::anySettings(data, "retrieve");
  const int kind = data.ConsumeIntegralInRange(0, 3);
  settings->set(L"FBMType", kind);
  settings->set(L"FBMFeatureType", data.ConsumeIntegralInRange(0, 5));
  if (data.ConsumeBool()) settings->set(L"DescLengthBytes", 1 << data.ConsumeIntegralInRange(0, 7));
  const bool asMatrix = data.ConsumeIntegralInRange(0, 3) != 0, describe = data.ConsumeBool();
  const auto image = fuzz::anyImage(data, 84);
  cv::Mat features, descriptors;
  std::vector<cv::KeyPoint> keyPoints;
  // Not well: remainders of cells, AKAZE's descriptor, lengths that LATCH does not have, Sobel sizes, no xfeatures2d.
  const End end = endOf([&] {
    MIREL_CHECK(asMatrix ? MirelAlgorithms::retrieveFeatures(image.mat, features, settings, describe)
                         : MirelAlgorithms::retrieveFeatures(image.mat, keyPoints, descriptors, settings));
  });
  MIREL_CHECK(image.untouched());
  MIREL_CHECK(end == End::well || (features.empty() && keyPoints.empty() && descriptors.empty()));
  if (end != End::well) return;

  if (!asMatrix) {
    MIREL_CHECK(keyPoints.size() == static_cast<std::size_t>(descriptors.rows));
    MIREL_CHECK(keyPoints.empty() || descriptors.cols == valueOf(settings, L"DescLengthBytes", 16));
  }
  MIREL_CHECK(features.empty() || (features.cols == 1 && features.type() == CV_32FC(5)));
  for (int i = 0; i < features.rows; ++i)
    keyPoints.emplace_back(features.ptr<float>(i)[0], features.ptr<float>(i)[1], 1.0f);
  if (kind != 0 || !asMatrix) MIREL_CHECK(keyPoints.size() <= mostFeatures(image.mat, settings));
  for (const cv::KeyPoint& k : keyPoints)
    MIREL_CHECK(k.pt.x > -1 && k.pt.y > -1 && k.pt.x < image.mat.cols + 1.0f && k.pt.y < image.mat.rows + 1.0f);
}
