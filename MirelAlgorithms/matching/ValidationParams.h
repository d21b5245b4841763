/// How strictly two frames are matched.
#pragma once

#include <MirelAlgorithms/Export.h>

#include <cstdint>

namespace MirelAlgorithms {

/// Presets of `FBMValidationParams`.
enum FBMFilterMode : int {
  Narrow = 0,      ///< small search area, strict distance, many matches required, refined by the image motion
  Wide = 1,        ///< large search area, looser distance, fewer matches required, refined by the image motion
  Exhaustive = 2,  ///< every pair is a candidate, one match suffices, not refined
};

/// Limits of `matchFeatures`. Plain values; start from a preset and change what you need.
///
/// |                 | Narrow | Wide   | Exhaustive           |
/// |-----------------|--------|--------|----------------------|
/// | minMatches      | 30     | 20     | 1                    |
/// | searchRadiusSq  | 120^2  | 400^2  | largest finite float |
/// | maxDistance     | 133    | 192    | 65535                |
/// | auxLimit1       | 5      | 20     | largest finite float |
/// | auxLimit2       | 0.001  | 0.004  | largest finite float |
/// | auxScale        | 1      | 1      | 1                    |
/// | ratio           | 0.8    | 0.8    | 0.8                  |
/// | refine          | true   | true   | false                |
struct FBMValidationParams {
  /// Fills the record from a preset. Any other mode is logged at level 1 ("wrong mode ...") and sets `ratio` alone: the
  /// other fields keep what the storage held, so fill them before reading. Never throws.
  MIREL_API FBMValidationParams(FBMFilterMode mode);

  std::int32_t minMatches;    ///< pairs needed for success, or the points of the smaller frame less 2 if fewer
  float searchRadiusSq;       ///< square of the search radius around a fresh prediction, pixels squared
  std::uint16_t maxDistance;  ///< largest Hamming distance of a candidate, 1024-bit scale
  float auxLimit1;            ///< carried for callers; the library does not read it
  float auxLimit2;            ///< carried for callers; the library does not read it
  float auxScale;             ///< carried for callers; the library does not read it
  float ratio;                ///< largest best / second best distance, and the margin of the backward test
  bool refine;                ///< match a second time with positions predicted by the image motion
};

}  // namespace MirelAlgorithms
