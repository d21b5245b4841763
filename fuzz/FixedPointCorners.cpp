/// The corner pipeline with random widths, blocks, cells and budgets: it equals plain loops, or refuses.
#include <MirelAlgorithms/features/FixedPointCorners.h>
#include <features/LiteralCorners.h>
#include <support/Matrices.h>

#include "Inputs.h"

namespace {

using fuzz::valueOf;

literal::Settings plain(const fuzz::Settings& s) {
  literal::Settings p;
  p.block = valueOf(s, L"FBMBlockSize", p.block);
  p.aperture = valueOf(s, L"FBMSobelSize", p.aperture);
  p.lumaShift = valueOf(s, L"FBMLumaLeftShift", p.lumaShift);
  p.sobelWidth = valueOf(s, L"FBMSobelWidthOut", p.sobelWidth);
  p.productWidth = valueOf(s, L"FBMGradMultWidthOut", p.productWidth);
  p.blockWidth = valueOf(s, L"FBMCovarWidthOut", p.blockWidth);
  p.eigenIn = valueOf(s, L"FBMEigenValWidthIn", p.eigenIn);
  p.eigenOut = valueOf(s, L"FBMEigenValWidthOut", p.eigenOut);
  p.test = MirelCore::get(s, VoskBase::String(L"FBMExtractionModel"), L"SingleMaximum7x7Patch").stringAnsi();
  p.cells = valueOf(s, L"FBMnCells", p.cells);
  p.budget = valueOf(s, L"FBMnFeatures", p.budget);
  p.autoThreshold = valueOf(s, L"FBMUseAutoThreshold", false);
  return p;
}

void checkFeatures(const cv::Mat& features, const cv::Size& image, int budget) {
  if (features.empty()) return;
  MIREL_CHECK(features.cols == 1 && features.type() == CV_32FC(5) && features.rows <= budget);
  float last = 1.0f;
  for (int i = 0; i < features.rows; ++i) {
    const float* f = features.ptr<float>(i);
    MIREL_CHECK(f[0] > 6 && f[0] < image.width - 7 && f[1] > 6 && f[1] < image.height - 7 && f[2] == 15);
    MIREL_CHECK(!(f[3] > 180.001f) && !(f[3] < -180.001f) && !(f[4] > last));
    last = f[4];
  }
}

// Where sums of squares of the widths stay exact in double.
bool isModest(const literal::Settings& s) {
  const auto within = [](int value, int most) { return value >= 1 && value <= most; };
  return s.cells <= 64 && std::abs(s.budget + 1.0) < 1e6 && within(s.block, 15) && within(s.lumaShift, 12) &&
         within(s.sobelWidth, 24) && within(s.productWidth, 24) && within(s.blockWidth, 24) && within(s.eigenIn, 24) &&
         within(s.eigenOut, 32);
}

void compareWithPlainLoops(const cv::Mat& image, const fuzz::Settings& settings, const cv::Mat& features,
                           const cv::Mat& map) {
  const literal::Settings s = plain(settings);
  if (!isModest(s) || valueOf(settings, L"UseBilateralFilter", false)) return;
  cv::Mat work;
  MirelCore::enhance(image, work, valueOf(settings, L"FBMEnhancement", 90000), {});
  const bool fixedPoint = valueOf(settings, L"FBMFpgaQuantized", false);
  const literal::Response response = fixedPoint ? fixedPointResponse(work, s) : floatResponse(work, s);
  if (response.largest == 0.0) {
    MIREL_CHECK(features.empty() && cv::countNonZero(map) == 0);
    return;
  }
  const cv::Mat_<float> wanted = normalised(response);
  MIREL_CHECK(MirelAlgorithms::same(map, wanted));
  const auto selected = select(literal::candidates(wanted, s.test), image.size(), s);
  MIREL_CHECK(static_cast<int>(selected.size()) == features.rows);
  for (int i = 0; i < features.rows; ++i) {
    const cv::KeyPoint& k = selected[i];
    const float expected[] = {k.pt.x, k.pt.y, k.size, k.angle, k.response};
    MIREL_CHECK(std::memcmp(features.ptr(i), expected, sizeof expected) == 0);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  FuzzedDataProvider data(bytes, size);
  const fuzz::Settings settings = fuzz::anySettings(data, "retrieveFeaturesFPGA",
                                                    {{L"FBMEnhancement", -1, 100000},
                                                     {L"FBMSobelSize", 1, 6},
                                                     {L"FBMLumaLeftShift", -8, 12},
                                                     {L"FBMSobelWidthOut", 0, 24},
                                                     {L"FBMGradMultWidthOut", 0, 30},
                                                     {L"FBMCovarWidthOut", 0, 30},
                                                     {L"FBMEigenValWidthIn", 1, 24},
                                                     {L"FBMEigenValWidthOut", 0, 33},
                                                     {L"FBMnFeatures", -1, 400}});
  const auto image = fuzz::anyImage(data, 44);
  const auto map = std::make_shared<cv::Mat>();
  cv::Mat features(2, 2, CV_8UC1, cv::Scalar(7)), withoutMap;
  const cv::Mat before = features;
  try {
    MIREL_CHECK(MirelAlgorithms::retrieveFeaturesFPGA(image.mat, features, settings, map));
    MIREL_CHECK(MirelAlgorithms::retrieveFeaturesFPGA(image.mat, withoutMap, settings, nullptr));
    MIREL_CHECK(map->size() == image.mat.size() && map->type() == CV_32FC1 && cv::checkRange(*map));
    MIREL_CHECK(MirelAlgorithms::same(features, withoutMap));
    checkFeatures(features, image.mat.size(), valueOf(settings, L"FBMnFeatures", 900));
    compareWithPlainLoops(image.mat, settings, features, *map);
  } catch (const std::invalid_argument&) {
    MIREL_CHECK(features.data == before.data && map->empty());
  } catch (const std::runtime_error&) {
    const int aperture = valueOf(settings, L"FBMSobelSize", 3);
    MIREL_CHECK(valueOf(settings, L"FBMFpgaQuantized", false) && aperture != 3 && aperture != 5);
    MIREL_CHECK(features.data == before.data && map->empty());
  }
  MIREL_CHECK(image.untouched());
  return 0;
}
