/// The same image and key points through every instruction set, on one thread and on several: the same descriptors.
/// Other operations with several forms are compared with a plain one by their targets.
#include <MirelAlgorithms/MirelAlgorithms.h>
#include <support/Matrices.h>
#include <tbb/global_control.h>

#include "Inputs.h"

using namespace MirelAlgorithms;

void feed(FuzzedDataProvider& data) {
  const auto settings = fuzz::anySettings(data, "retrieveDescriptors");
  settings->set(L"FBMType", data.ConsumeIntegralInRange(0, 1));
  const auto image = fuzz::anyImage(data, 90);
  std::vector<cv::KeyPoint> keyPoints(80);
  cv::RNG random(data.ConsumeIntegral<std::uint16_t>());
  for (cv::KeyPoint& k : keyPoints)
    k = cv::KeyPoint(random.uniform(-9.0f, 99.0f), random.uniform(-9.0f, 99.0f), random.uniform(-1.0f, 3.0f),
                     random.uniform(-360.0f, 360.0f));
  for (cv::KeyPoint& k : keyPoints)
    if (data.remaining_bytes() > 0 && data.ConsumeIntegralInRange(0, 7) == 7)
      k = cv::KeyPoint(anyReal<float>(data), anyReal<float>(data), anyReal<float>(data), anyReal<float>(data));
  cv::Mat features(80, 1, CV_32FC(5));
  for (int i = 0; i < 80; ++i) std::memcpy(features.ptr(i), &keyPoints[i], 5 * sizeof(float));
  keyPoints.resize(20);

  cv::Mat wanted[3];
  End wantedEnd = End::well;
  for (const int threads : {1, 3})
    for (const CpuVariant variant : {CpuVariant::baseline, CpuVariant::avx2, CpuVariant::avx512}) {
      const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, threads);
      limitCpuVariant(variant);
      cv::Mat found[3] = {features.clone()};
      const End end = endOf([&] {
        retrieveDescriptors(image.mat, found[0], found[1], settings);
        found[2] = MirelScalingORB(image.mat).getDescriptors(keyPoints);
      });
      if (threads == 1 && variant == CpuVariant::baseline) {
        std::copy(found, found + 3, wanted);
        wantedEnd = end;
      }
      MIREL_CHECK(end == wantedEnd && std::equal(found, found + 3, wanted, same));
    }
}
