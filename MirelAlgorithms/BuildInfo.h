/// What this build of the library is.
#pragma once

#include <MirelAlgorithms/Export.h>

namespace MirelAlgorithms {

/// Facts about the build and the machine it runs on, for version lines and run records.
struct BuildInfo {
  const char* version;       ///< version of this library, "major.minor.patch"
  const char* openCV;        ///< version of the OpenCV it runs with
  bool xfeatures2d;          ///< whether LATCH and FREAK descriptors are there
  const char* instructions;  ///< instruction set its inner loops use on this machine: "baseline", "avx2" or "avx512"
};

/// Facts about this build. The texts live as long as the library. Any number of threads.
MIREL_API BuildInfo buildInfo();

}  // namespace MirelAlgorithms
