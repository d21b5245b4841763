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
  cv::Mat selected(0, 5, CV_32FC1);
  for (const cv::KeyPoint& k : select(literal::candidates(wanted, s.test), image.size(), s))
    selected.push_back(cv::Mat(cv::Matx<float, 1, 5>(k.pt.x, k.pt.y, k.size, k.angle, k.response)));
  MIREL_CHECK(MirelAlgorithms::same(features, selected.reshape(5)));
}

}  // namespace

void feed(FuzzedDataProvider& data) {
  const fuzz::Settings settings = fuzz::anySettings(data, "retrieveFeaturesFPGA");
  const auto image = fuzz::anyImage(data, 44);
  const auto map = std::make_shared<cv::Mat>();
  cv::Mat features;
  const End end =
      endOf([&] { MIREL_CHECK(MirelAlgorithms::retrieveFeaturesFPGA(image.mat, features, settings, map)); });
  MIREL_CHECK(image.untouched());
  if (end == End::well) {
    MIREL_CHECK(map->size() == image.mat.size() && map->type() == CV_32FC1 && cv::checkRange(*map));
    compareWithPlainLoops(image.mat, settings, features, *map);
  } else {
    const int aperture = valueOf(settings, L"FBMSobelSize", 3);
    const bool noKernel = valueOf(settings, L"FBMFpgaQuantized", false) && aperture != 3 && aperture != 5;
    MIREL_CHECK(end == End::refused || (end == End::unsupported && noKernel));
    MIREL_CHECK(features.empty() && map->empty());
  }
}
