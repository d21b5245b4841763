/// Detection by every detector, with random cells and budgets, in both forms: budgets are kept, positions lie in the
/// image, errors leave the outputs alone.
#include <MirelAlgorithms/features/FeatureExtraction.h>
#include <support/Matrices.h>

#include <cmath>

#include "Inputs.h"

namespace {

using fuzz::valueOf;

// Cells are floor(length / cells) long; half a cell that is left over makes one more of them.
std::size_t mostFeatures(const cv::Mat& image, const fuzz::Settings& settings) {
  const int cells = valueOf(settings, L"FBMnCells", 3), budget = valueOf(settings, L"FBMnFeatures", 2000);
  const auto along = [cells](int length) { return (length - length / cells / 2 - 1) / (length / cells) + 1; };
  return static_cast<std::size_t>(std::max(budget / (cells * cells), 0)) * along(image.cols) * along(image.rows);
}

void checkPosition(float x, float y, const cv::Mat& image) {
  MIREL_CHECK(x > -1 && y > -1 && x < static_cast<float>(image.cols + 1) && y < static_cast<float>(image.rows + 1));
}

void matrixForm(const cv::Mat& image, const fuzz::Settings& settings, bool describe) {
  cv::Mat features(2, 2, CV_8UC1), again;
  const cv::Mat before = features;
  try {
    MIREL_CHECK(MirelAlgorithms::retrieveFeatures(image, features, settings, describe));
    MIREL_CHECK(MirelAlgorithms::retrieveFeatures(image, again, settings, describe));
  } catch (...) {
    MIREL_CHECK(features.data == before.data);
    throw;
  }
  MIREL_CHECK(MirelAlgorithms::same(features, again));
  MIREL_CHECK(features.empty() || (features.cols == 1 && features.type() == CV_32FC(5)));
  for (int i = 0; i < features.rows; ++i) checkPosition(features.ptr<float>(i)[0], features.ptr<float>(i)[1], image);
  if (valueOf(settings, L"FBMType", 0) != 0)
    MIREL_CHECK(static_cast<std::size_t>(features.rows) <= mostFeatures(image, settings));
}

void keyPointForm(const cv::Mat& image, const fuzz::Settings& settings) {
  std::vector<cv::KeyPoint> keyPoints(3);
  cv::Mat descriptors(2, 2, CV_8UC1);
  const cv::Mat before = descriptors;
  try {
    MIREL_CHECK(MirelAlgorithms::retrieveFeatures(image, keyPoints, descriptors, settings));
  } catch (...) {
    MIREL_CHECK(keyPoints.size() == 3 && descriptors.data == before.data);
    throw;
  }
  MIREL_CHECK(keyPoints.size() == static_cast<std::size_t>(descriptors.rows));
  MIREL_CHECK(keyPoints.empty() || descriptors.cols == valueOf(settings, L"DescLengthBytes", 16));
  MIREL_CHECK(keyPoints.size() <= mostFeatures(image, settings));
  for (const cv::KeyPoint& k : keyPoints) checkPosition(k.pt.x, k.pt.y, image);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  FuzzedDataProvider data(bytes, size);
  const fuzz::Settings settings = fuzz::anySettings(data, "retrieve",
                                                    {{L"FBMnCells", 1, 6},
                                                     {L"FBMnFeatures", 0, 60},
                                                     {L"PatchSize", 0, 12},
                                                     {L"FBMSobelSize", 3, 5},
                                                     {L"FBMEnhancement", -1, 100000}});
  settings->set(L"FBMType", data.ConsumeIntegralInRange(0, 3));
  settings->set(L"FBMFeatureType", data.ConsumeIntegralInRange(0, 5));
  if (data.ConsumeBool()) settings->set(L"DescLengthBytes", 1 << data.ConsumeIntegralInRange(0, 7));
  const bool asMatrix = data.ConsumeIntegralInRange(0, 3) != 0, describe = data.ConsumeBool();
  const auto image = fuzz::anyImage(data, 84);
  try {
    asMatrix ? matrixForm(image.mat, settings, describe) : keyPointForm(image.mat, settings);
  } catch (const std::invalid_argument&) {
  } catch (const cv::Exception&) {  // remainders of cells, AKAZE's descriptor, lengths that LATCH does not have
  } catch (const std::runtime_error& error) {
    MIREL_CHECK(std::strstr(error.what(), "Unsupported Sobel size") || std::strstr(error.what(), "xfeatures2d"));
  }
  MIREL_CHECK(image.untouched());
  return 0;
}
