/// The report page about matched photographs.
#pragma once

#include "output/Report.h"
#include "texture/TextureResult.h"

namespace mirel {

/// Answer, verdict and tables; pictures are the caller's.
Report textureReport(const TextureResult& result, const StageClock& clock);

}  // namespace mirel
