/// What targets share.
#pragma once

#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <filters/SameBits.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <vector>

/// Ends the process when a promise is broken, which the fuzzer reports with the input.
#define MIREL_CHECK(condition)                                                     \
  do {                                                                             \
    if (!(condition)) {                                                            \
      std::fprintf(stderr, "%s:%d: broken: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                                \
    }                                                                              \
  } while (false)

/// What a target does with one input.
void feed(FuzzedDataProvider& data);

/// What the fuzzer calls. The length of the input says by which instruction set, so that no byte has to.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  using MirelAlgorithms::CpuVariant;
  constexpr CpuVariant variants[] = {CpuVariant::baseline, CpuVariant::avx2, CpuVariant::avx512};
  MirelAlgorithms::limitCpuVariant(variants[size % 3]);
  FuzzedDataProvider data(bytes, size);
  feed(data);
  return 0;
}

/// Calls an operation; whether it refused its arguments, with words.
template <class Error = std::invalid_argument, class Operation>
bool refused(const Operation& operation) {
  try {
    operation();
    return false;
  } catch (const Error& error) {
    MIREL_CHECK(error.what()[0] != '\0');
    return true;
  }
}

template <class Real>
bool sameBits(const std::vector<Real>& a, const std::vector<Real>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](Real x, Real y) { return sameBits(x, y); });
}

/// How an operation ends that may meet limits of OpenCV and of the build.
enum class End { well, refused, openCvError, unsupported };

template <class Operation>
End endOf(const Operation& operation) {
  try {
    return refused(operation) ? End::refused : End::well;
  } catch (const cv::Exception&) {
    return End::openCvError;
  } catch (const std::runtime_error&) {
    return End::unsupported;
  }
}

/// Mostly small numbers, so that values meet; sometimes any bits, not finite ones among them.
template <class Real>
Real anyReal(FuzzedDataProvider& data) {
  switch (data.ConsumeIntegralInRange(0, 7)) {
    case 0:
      return data.ConsumeFloatingPoint<Real>();
    case 1:
      return data.PickValueInArray({Real(0), -Real(0), Real(1e-30), Real(1e30), std::numeric_limits<Real>::infinity(),
                                    -std::numeric_limits<Real>::infinity(), std::numeric_limits<Real>::quiet_NaN()});
    case 2:
      return data.ConsumeFloatingPointInRange<Real>(-1, 1);
    default:
      return static_cast<Real>(data.ConsumeIntegralInRange(-128, 127)) / 8;
  }
}
