/// What targets share.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>

/// Ends the process when a promise is broken, which the fuzzer reports with the input.
#define MIREL_CHECK(condition)                                                     \
  do {                                                                             \
    if (!(condition)) {                                                            \
      std::fprintf(stderr, "%s:%d: broken: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                                \
    }                                                                              \
  } while (false)

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
