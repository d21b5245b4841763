/// What simplification did to a mesh, in numbers.
#pragma once

#include "meshes/MeshDistance.h"
#include "output/Report.h"
#include "output/RunRecord.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>

namespace mirel {

/// Numbers of a mesh.
struct MeshSize {
  std::size_t triangles = 0, vertices = 0;
  std::size_t openEdges = 0;  ///< with a triangle on one side only
  double diagonal = 0;        ///< of the box along the axes

  MeshSize() = default;
  explicit MeshSize(const Surface& surface);
};

struct MeshChange {
  std::string in, out;
  std::set<std::string> rewritten;  ///< what of the file was written anew before it was loaded
  std::optional<int> asked;         ///< triangles; nothing: lossless
  double aggressiveness = 0;
  MeshSize before, after;
  MeshDistance distance;
  bool textured = false;
  std::size_t materials = 0;
  double rounding = 0;  ///< of coordinates in the written file

  bool isEmpty() const { return after.triangles == 0; }

  /// Why there are not fewer triangles.
  struct Stop {
    const char *name, *text;
  };
  Stop stop() const;
};

/// Fields are described in docs/obj-files.md.
nlohmann::json resultJson(const MeshChange& change);

Report meshReport(const MeshChange& change);

std::string summaryText(const MeshChange& change, const StageClock& clock);

}  // namespace mirel
