/// Meshes to files.
#pragma once

#include "output/OutputFolder.h"

#include <MirelAlgorithms/mesh/MeshSimplification.h>

namespace mirel {

/// Writes a mesh and looks at what has arrived; throws `UsageError` when that is not all of it.
void writeMesh(const StagedFile& file, MirelAlgorithms::MeshSimplification& mesh);

/// How far a coordinate of the mesh can be from the one in the file, which has six digits.
double roundingInFile(const MirelAlgorithms::MeshSimplification& mesh);

}  // namespace mirel
