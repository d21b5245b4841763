/// Where a surface ends.
#pragma once

#include "meshes/Surface.h"

#include <array>
#include <vector>

namespace mirel {

/// The edges, as numbers of their vertices, that have a triangle on one side only. Time n log n in the triangles.
std::vector<std::array<int, 2>> openBorders(const Surface& surface);

}  // namespace mirel
