#include <MirelAlgorithms/frame/internal/Log.h>
#include <MirelAlgorithms/matching/ValidationParams.h>

#include <limits>

namespace MirelAlgorithms {
namespace {

constexpr float unlimited = (std::numeric_limits<float>::max)();

void set(FBMValidationParams& params, std::int32_t minMatches, float searchRadiusSq, std::uint16_t maxDistance,
         float auxLimit1, float auxLimit2, bool refine) {
  params.minMatches = minMatches;
  params.searchRadiusSq = searchRadiusSq;
  params.maxDistance = maxDistance;
  params.auxLimit1 = auxLimit1;
  params.auxLimit2 = auxLimit2;
  params.auxScale = 1.0f;
  params.refine = refine;
}

}  // namespace

// Not inline: the fields that a wrong mode leaves alone must survive in storage that the caller filled.
FBMValidationParams::FBMValidationParams(FBMFilterMode mode) {
  ratio = 0.8f;
  switch (mode) {
    case Narrow:
      set(*this, 30, 120.0f * 120.0f, 133, 5.0f, 0.001f, true);
      break;
    case Wide:
      set(*this, 20, 400.0f * 400.0f, 192, 20.0f, 0.004f, true);
      break;
    case Exhaustive:
      set(*this, 1, unlimited, 65535, unlimited, unlimited, false);
      break;
    default:
      MIREL_LOG("FeatureExtraction.cpp", "MirelAlgorithms::FBMValidationParams::FBMValidationParams",
                LogLevel::corrected, L"wrong mode %d", static_cast<int>(mode));
  }
}

}  // namespace MirelAlgorithms
