/// Overdetermined linear systems, plain or robust against outlier rows.
#pragma once

#include <MirelAlgorithms/Export.h>

#include <cstdint>
#include <vector>

namespace MirelAlgorithms {

class MIREL_API Lsq {
 public:
  Lsq() = default;
  virtual ~Lsq();
};

}  // namespace MirelAlgorithms
