/// Guided matching of small frames, with rows and widths that agree or do not, positions, circles and ratios that are
/// any numbers: the same bits as nested loops, or the documented refusal.
#include <MirelAlgorithms/matching/FeatureMatching.h>
#include <matching/LiteralMatching.h>
#include <support/Matrices.h>

#include "Inputs.h"

namespace {

using namespace MirelAlgorithms;

FBMValidationParams anyParams(FuzzedDataProvider& data) {
  FBMValidationParams params(static_cast<FBMFilterMode>(data.ConsumeIntegralInRange(0, 2)));
  if (data.ConsumeBool()) return params;
  params.minMatches = data.ConsumeIntegralInRange(-1, 40);
  params.searchRadiusSq = anyReal<float>(data) * 100;
  params.maxDistance = data.ConsumeIntegral<std::uint16_t>();
  params.ratio = data.ConsumeBool() ? data.ConsumeFloatingPointInRange(0.0f, 1.2f) : anyReal<float>(data);
  params.refine = data.ConsumeBool();
  return params;
}

// All but the padding of matches.
std::vector<float> numbersOf(const std::vector<FBMatch>& matches, const std::vector<FBPrediction>& predictions) {
  std::vector<float> all;
  for (const FBMatch& m : matches)
    all.insert(all.end(), {1.0f * m.queryIdx, 1.0f * m.trainIdx, 1.0f * m.distance, m.predictedX, m.predictedY});
  for (const FBPrediction& p : predictions) all.insert(all.end(), {p.x, p.y, p.searchRadiusSq, 1.0f * p.state});
  return all;
}

void checkMatching(const fuzz::Frame& f1, const fuzz::Frame& f2, const FBMValidationParams& params,
                   const std::vector<FBPrediction>& given) {
  const cv::Mat &d1 = f1.descriptors.mat, &d2 = f2.descriptors.mat;
  std::vector<FBMatch> matches(1, {7, 7, 7, 7, 7}), wanted = matches;
  std::vector<FBPrediction> predictions = given, wantedPredictions = given;
  bool result = false, wantedResult = false;
  const bool empty = f1.keyPoints.empty() || f2.keyPoints.empty() || d1.cols != d2.cols ||
                     f1.keyPoints.size() != static_cast<std::size_t>(d1.rows) ||
                     f2.keyPoints.size() != static_cast<std::size_t>(d2.rows);
  const bool wrong = d1.cols == 0 || d1.type() != CV_8UC1 || d2.type() != CV_8UC1;
  const auto call = [&] { result = matchFeatures(f1.keyPoints, d1, f2.keyPoints, d2, params, matches, predictions); };
  MIREL_CHECK(refused(call) == (!empty && wrong));
  if (!empty && !wrong)
    wantedResult = literal::matchFeatures(f1.keyPoints, d1, f2.keyPoints, d2, params, wanted, wantedPredictions);
  MIREL_CHECK(result == wantedResult);
  MIREL_CHECK(MirelAlgorithms::same(cv::Mat(numbersOf(matches, predictions), true),
                                    cv::Mat(numbersOf(wanted, wantedPredictions), true)));
}

}  // namespace

void feed(FuzzedDataProvider& data) {
  const FBMValidationParams params = anyParams(data);
  const bool alike = data.ConsumeBool();
  std::vector<FBPrediction> predictions(data.ConsumeIntegralInRange(0, 3));
  const int width = data.PickValueInArray({0, 1, 7, 8, 15, 16, 32, 32, 61, 64, 128, 200});
  const int type = width % 16 == 15 ? CV_16UC1 : CV_8UC1;
  const fuzz::Frame first(data, width, type);
  fuzz::Frame second(data, fuzz::rarely(data) ? 24 : width, type);
  if (alike) second.resemble(data, first);
  if (data.ConsumeBool()) predictions.resize(first.keyPoints.size());
  for (FBPrediction& p : predictions)
    p = {anyReal<float>(data) * 8, anyReal<float>(data) * 8, anyReal<float>(data) * 100,
         data.ConsumeIntegralInRange(-1, 5)};
  checkMatching(first, second, params, predictions);
  MIREL_CHECK(first.descriptors.untouched() && second.descriptors.untouched());
}
