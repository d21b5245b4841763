/// The same input through every instruction set, on one thread and on several: the same bytes.
#include <MirelAlgorithms/MirelAlgorithms.h>
#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/texture/internal/NearestRows.h>
#include <tbb/global_control.h>

#include <functional>

#include "Inputs.h"

namespace {

using namespace MirelAlgorithms;
using Bytes = std::vector<unsigned char>;

void append(Bytes& all, const void* data, std::size_t size) {
  const auto* bytes = static_cast<const unsigned char*>(data);
  all.insert(all.end(), bytes, bytes + size);
}
void append(Bytes& all, const cv::Mat& mat) {
  for (int i = 0; i < mat.rows; ++i) append(all, mat.ptr(i), mat.cols * mat.elemSize());
}

void checkEverywhere(const std::function<void(Bytes&)>& operation) {
  Bytes wanted;
  for (const int threads : {1, 3})
    for (const CpuVariant variant : {CpuVariant::baseline, CpuVariant::avx2, CpuVariant::avx512}) {
      const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, threads);
      limitCpuVariant(variant);
      Bytes bytes;
      try {
        operation(bytes);
      } catch (const std::exception& error) {
        bytes.assign(error.what(), error.what() + std::strlen(error.what()));
      }
      if (threads == 1 && variant == CpuVariant::baseline) wanted = bytes;
      MIREL_CHECK(bytes == wanted);
    }
}

std::vector<cv::KeyPoint> anyKeyPoints(FuzzedDataProvider& data, int count) {
  std::vector<cv::KeyPoint> keyPoints(count);
  cv::RNG random(data.ConsumeIntegral<std::uint16_t>());
  for (cv::KeyPoint& k : keyPoints)
    k = cv::KeyPoint(random.uniform(-9.0f, 99.0f), random.uniform(-9.0f, 99.0f), random.uniform(-1.0f, 3.0f),
                     random.uniform(-360.0f, 360.0f));
  for (cv::KeyPoint& k : keyPoints)
    if (data.remaining_bytes() > 0 && data.ConsumeIntegralInRange(0, 7) == 7)
      k = cv::KeyPoint(anyReal<float>(data), anyReal<float>(data), anyReal<float>(data), anyReal<float>(data));
  return keyPoints;
}

void corners(FuzzedDataProvider& data) {
  const auto settings = fuzz::anySettings(data, "retrieveFeaturesFPGA",
                                          {{L"FBMEnhancement", -1, 100000, false},
                                           {L"FBMSobelSize", 3, 3, false},
                                           {L"FBMBlockSize", 1, 9, false},
                                           {L"FBMLumaLeftShift", 0, 8, false},
                                           {L"FBMSobelWidthOut", 8, 24, false},
                                           {L"FBMGradMultWidthOut", 8, 30, false},
                                           {L"FBMCovarWidthOut", 8, 30, false},
                                           {L"FBMEigenValWidthIn", 4, 24, false},
                                           {L"FBMEigenValWidthOut", 4, 33, false},
                                           {L"FBMnCells", 1, 4, false}});
  settings->set(L"FBMFpgaQuantized", !data.ConsumeBool());
  const auto image = fuzz::anyImage(data, 90);
  checkEverywhere([&](Bytes& bytes) {
    const auto map = std::make_shared<cv::Mat>();
    cv::Mat features;
    retrieveFeaturesFPGA(image.mat, features, settings, map);
    append(bytes, features);
    append(bytes, *map);
  });
}

void descriptors(FuzzedDataProvider& data) {
  const auto settings = fuzz::anySettings(data, "retrieveDescriptors", {{L"DescLengthBytes", 16, 16, false}});
  settings->set(L"FBMType", data.ConsumeIntegralInRange(0, 1));
  const auto image = fuzz::anyImage(data, 90);
  const auto keyPoints = anyKeyPoints(data, 80);
  cv::Mat features(80, 1, CV_32FC(5));
  for (int i = 0; i < 80; ++i) std::memcpy(features.ptr(i), &keyPoints[i], 5 * sizeof(float));
  checkEverywhere([&](Bytes& bytes) {
    cv::Mat kept = features, found;
    retrieveDescriptors(image.mat, kept, found, settings);
    append(bytes, kept);
    append(bytes, found);
    append(bytes, MirelScalingORB(image.mat).getDescriptors({keyPoints.begin(), keyPoints.begin() + 20}));
  });
}

void matching(FuzzedDataProvider& data) {
  FBMValidationParams params(static_cast<FBMFilterMode>(data.ConsumeIntegralInRange(0, 2)));
  params.searchRadiusSq = data.ConsumeBool() ? params.searchRadiusSq : anyReal<float>(data) * 100;
  params.maxDistance = data.ConsumeBool() ? params.maxDistance : data.ConsumeIntegral<std::uint16_t>();
  const int width = data.PickValueInArray({8, 16, 32, 32, 61, 64, 128});
  const int size1 = fuzz::upTo(data, 80, 1), size2 = fuzz::upTo(data, 80, 1);
  const fuzz::ExactMatrix d1(data, size1, width, CV_8UC1), d2(data, size2, width, CV_8UC1);
  const auto k1 = anyKeyPoints(data, size1), k2 = anyKeyPoints(data, size2);
  checkEverywhere([&](Bytes& bytes) {
    std::vector<FBMatch> matches;
    std::vector<FBPrediction> predictions;
    bytes.push_back(matchFeatures(k1, d1.mat, k2, d2.mat, params, matches, predictions));
    for (const FBMatch& m : matches) append(bytes, &m.queryIdx, 10), append(bytes, &m.predictedX, 8);
    append(bytes, predictions.data(), predictions.size() * sizeof(FBPrediction));
  });
}

void nearestRows(FuzzedDataProvider& data) {
  const int width = data.ConsumeIntegralInRange(1, 80);
  const fuzz::ExactMatrix d1(data, fuzz::upTo(data, 80), width, CV_8UC1);
  const fuzz::ExactMatrix d2(data, fuzz::upTo(data, 80), width, CV_8UC1);
  const bool pairs = data.ConsumeBool();
  checkEverywhere([&](Bytes& bytes) {
    const NearestRows rows = findNearestRows("nearestRows", d1.mat, d2.mat, pairs);
    append(bytes, rows.of1.data(), rows.of1.size() * sizeof(NearestRow));
    append(bytes, rows.of2.data(), rows.of2.size() * sizeof(NearestRow));
  });
}

void smoothing(FuzzedDataProvider& data) {
  const fuzz::Settings settings(new Brel::AttrContainer());
  settings->set(L"smoothDenseRadius", 2 * data.ConsumeIntegralInRange(0, 2) + 1);
  settings->set(L"smoothSparseMode", data.ConsumeIntegralInRange(2, 6) << 12);
  settings->set(L"smoothSparseMaxPts", data.ConsumeIntegralInRange(1, 60));
  const auto image = fuzz::anyImage(data, 90, CV_16UC1);
  const auto keyPoints = anyKeyPoints(data, 120);
  cv::Mat points(120, 5, CV_32FC1);
  for (int i = 0; i < points.rows; ++i) std::memcpy(points.ptr(i), &keyPoints[i], 5 * sizeof(float));
  checkEverywhere([&](Bytes& bytes) {
    cv::Mat depth, thinned;
    smoothDenseZ16(image.mat, depth, settings);
    smoothSparse3D(points, thinned, settings);
    append(bytes, depth);
    append(bytes, thinned);
  });
}

void leastSquares(FuzzedDataProvider& data) {
  const int cols = data.ConsumeIntegralInRange(1, 12), rows = cols + data.ConsumeIntegralInRange(0, 60);
  std::vector<double> a(rows * cols), b(rows);
  cv::RNG random(data.ConsumeIntegral<std::uint16_t>());
  for (double& value : a) value = random.uniform(-1.0, 1.0);
  for (double& value : b) value = data.remaining_bytes() > 0 ? anyReal<double>(data) : random.uniform(-1.0, 1.0);
  checkEverywhere([&](Bytes& bytes) {
    std::vector<double> x(cols);
    Lsq solver;
    bytes.push_back(static_cast<unsigned char>(solver.lsq(a.data(), b.data(), x.data(), rows, cols, 1, 3.5, 0.0)));
    append(bytes, x.data(), x.size() * sizeof(double));
    append(bytes, solver.outlier().data(), solver.outlier().size() * sizeof(std::int32_t));
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  FuzzedDataProvider data(bytes, size);
  constexpr void (*subjects[])(FuzzedDataProvider&) = {corners,     descriptors, matching,
                                                       nearestRows, smoothing,   leastSquares};
  subjects[data.ConsumeIntegralInRange(0, 5)](data);
  return 0;
}
