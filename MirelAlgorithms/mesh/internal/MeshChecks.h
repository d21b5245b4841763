/// Refusal of meshes and arguments whose numbers lead nowhere, before they are followed.
#pragma once

#include <MirelAlgorithms/mesh/MeshSimplification.h>

#include <vector>

namespace MirelAlgorithms {

/// Refuses more triangles than references to them can be counted, and triangles with vertex numbers outside the mesh;
/// deleted triangles only if asked to.
void requireVertices(const char* function, const MeshSimplification& mesh, bool alsoOfDeleted);

/// Refuses a vertex number outside the mesh.
void requireVertex(const char* function, const char* argument, const MeshSimplification& mesh, int number);

/// Refuses a vertex whose references lie outside the mesh or lead outside it, and fewer marks than it has references.
void requireFan(const char* function, const char* argument, const MeshSimplification& mesh, const Vertex& vertex,
                const std::vector<int>& marks);

}  // namespace MirelAlgorithms
