/// Guided matching of small frames, with rows and widths that agree or do not, positions, circles and ratios that are
/// any numbers: the same bits as nested loops, or the documented refusal. And Hamming distances at any alignment.
#include <MirelAlgorithms/matching/FeatureMatching.h>
#include <MirelAlgorithms/matching/Hamming.h>
#include <matching/LiteralMatching.h>

#include "Inputs.h"

namespace {

using namespace MirelAlgorithms;

struct Frame {
  Frame(FuzzedDataProvider& data, int width)
      : descriptors(data, fuzz::upTo(data, 40), width, width % 16 == 15 ? CV_16UC1 : CV_8UC1) {
    const bool disagrees = fuzz::rarely(data);
    keyPoints.resize(descriptors.mat.rows + (disagrees ? 1 : 0));
    for (cv::KeyPoint& k : keyPoints) k.pt = {anyReal<float>(data) * 8, anyReal<float>(data) * 8};
  }

  // The other's descriptors with a bit turned here and there, and its positions moved.
  void resemble(FuzzedDataProvider& data, const Frame& other) {
    const cv::Point2f shift(anyReal<float>(data), anyReal<float>(data));
    for (int i = 0; i < std::min(descriptors.mat.rows, other.descriptors.mat.rows); ++i) {
      for (int k = 0; k < descriptors.mat.cols * static_cast<int>(descriptors.mat.elemSize()); ++k)
        descriptors.mat.ptr(i)[k] = static_cast<uchar>(other.descriptors.mat.ptr(i)[k] ^ (i * k % 64 == 0));
      keyPoints[i].pt = other.keyPoints[i].pt + shift;
    }
    descriptors.keep();
  }

  fuzz::ExactMatrix descriptors;
  std::vector<cv::KeyPoint> keyPoints;
};

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

template <class Record>
bool same(const std::vector<Record>& a, const std::vector<Record>& b) {
  return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(Record)) == 0);
}

void checkMatching(const Frame& f1, const Frame& f2, const FBMValidationParams& params,
                   const std::vector<FBPrediction>& given) {
  const cv::Mat &d1 = f1.descriptors.mat, &d2 = f2.descriptors.mat;
  std::vector<FBMatch> matches(1), wanted(1);
  std::memset(static_cast<void*>(matches.data()), 7, sizeof(FBMatch));
  wanted = matches;
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
  MIREL_CHECK(result == wantedResult && same(predictions, wantedPredictions));
  MIREL_CHECK(matches.size() == wanted.size());
  for (std::size_t i = 0; i < wanted.size(); ++i) {  // not the padding
    MIREL_CHECK(matches[i].queryIdx == wanted[i].queryIdx && matches[i].trainIdx == wanted[i].trainIdx);
    MIREL_CHECK(matches[i].distance == wanted[i].distance);
    MIREL_CHECK(std::memcmp(&matches[i].predictedX, &wanted[i].predictedX, 2 * sizeof(float)) == 0);
  }
}

void checkHamming(FuzzedDataProvider& data) {
  const unsigned words = data.ConsumeIntegralInRange(0, 12), shift = data.ConsumeIntegralInRange(0, 70);
  const int offset = data.ConsumeIntegralInRange(0, 7);
  fuzz::ExactMatrix memory(data, 1, offset + 16 * static_cast<int>(std::max(words, 2u)), CV_8UC1);
  const uchar *a = memory.mat.data + offset, *b = a + 8 * std::max(words, 2u);
  const auto wanted = [&](unsigned n) { return n == 0 || shift > 15 ? 0 : literal::distance(a, b, n, shift); };
  const auto words64 = [](const uchar* p) { return reinterpret_cast<const std::uint64_t*>(p); };
  MIREL_CHECK(computeHammingDistance(words64(a), words64(b), words, shift) == wanted(words));
  MIREL_CHECK(computeHammingDistance64(words64(a), words64(b), shift) == wanted(1));
  const auto vector = [](const uchar* p) { return reinterpret_cast<const __m128i*>(p); };
  MIREL_CHECK(computeHammingDistance128(vector(a), vector(b), shift) == wanted(2));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  FuzzedDataProvider data(bytes, size);
  checkHamming(data);
  const FBMValidationParams params = anyParams(data);
  const bool alike = data.ConsumeBool();
  std::vector<FBPrediction> predictions(data.ConsumeIntegralInRange(0, 3));
  const int width = data.PickValueInArray({0, 1, 7, 8, 15, 16, 32, 32, 61, 64, 128, 200});
  const Frame first(data, width);
  Frame second(data, fuzz::rarely(data) ? 24 : width);
  if (alike && first.descriptors.mat.type() == second.descriptors.mat.type() &&
      first.descriptors.mat.cols == second.descriptors.mat.cols)
    second.resemble(data, first);
  if (data.ConsumeBool()) predictions.resize(first.keyPoints.size());
  for (FBPrediction& p : predictions)
    p = {anyReal<float>(data) * 8, anyReal<float>(data) * 8, anyReal<float>(data) * 100,
         data.ConsumeIntegralInRange(-1, 5)};
  checkMatching(first, second, params, predictions);
  MIREL_CHECK(first.descriptors.untouched() && second.descriptors.untouched());
  return 0;
}
