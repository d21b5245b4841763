/// One diagnostic line through the host's log: nothing is evaluated or formatted unless the host wants the level.
///
///     MIREL_LOG("FeatureExtraction.cpp", "cornerMinEigenValFpga", LogLevel::diagnostic, L"EIGEN in/out (bit): %d/%d",
///     in, out);
#pragma once

#include <MirelCore/MirelCore.h>

namespace MirelAlgorithms::LogLevel {

inline constexpr int corrected = 1;           ///< an invalid argument that the library put right by itself
inline constexpr int diagnostic = 1000;       ///< ordinary output of the algorithms
inline constexpr int matchStatistics = 1500;  ///< per-frame statistics of matching

}  // namespace MirelAlgorithms::LogLevel

#define MIREL_LOG(file, function, level, ...)                                                      \
  do {                                                                                             \
    if (MirelCore::shouldLog(level)) MirelCore::log(file, __LINE__, function, level, __VA_ARGS__); \
  } while (false)
