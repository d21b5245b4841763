/// How strictly two frames are matched.
#pragma once

#include <MirelAlgorithms/Export.h>

#include <cstdint>

namespace MirelAlgorithms {

enum FBMFilterMode : int {
  Narrow = 0,      ///< small search area, strict distance, many matches required, refined by the image motion
  Wide = 1,        ///< large search area, looser distance, fewer matches required, refined by the image motion
  Exhaustive = 2,  ///< every pair is a candidate, one match suffices, not refined
};

struct FBMValidationParams {
  MIREL_API explicit FBMValidationParams(FBMFilterMode mode);

  std::int32_t minMatches;
  float searchRadiusSq;
  std::uint16_t maxDistance;
  float auxLimit1;
  float auxLimit2;
  float auxScale;
  float ratio;
  bool refine;
};

}  // namespace MirelAlgorithms
