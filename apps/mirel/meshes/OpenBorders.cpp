#include "meshes/OpenBorders.h"

#include <algorithm>

namespace mirel {

std::vector<std::array<int, 2>> openBorders(const Surface& surface) {
  std::vector<std::array<int, 2>> edges, borders;
  edges.reserve(3 * surface.triangles.size());
  for (const std::array<int, 3>& triangle : surface.triangles) {
    for (int i = 0; i < 3; ++i) {
      const auto [low, high] = std::minmax(triangle[i], triangle[(i + 1) % 3]);
      edges.push_back({low, high});
    }
  }
  std::sort(edges.begin(), edges.end());
  for (std::size_t i = 0, next = 0; i < edges.size(); i = next) {
    while (next < edges.size() && edges[next] == edges[i]) ++next;
    if (next == i + 1) borders.push_back(edges[i]);
  }
  return borders;
}

}  // namespace mirel
