/// What is computed from the triangles as a whole. Vertex numbers are not checked.
#pragma once

#include <MirelAlgorithms/mesh/MeshRecords.h>

#include <vector>

namespace MirelAlgorithms {

void removeDeleted(std::vector<Triangle>& triangles);

/// Normals of the triangles, and the quadrics of their planes added up at the vertices.
void computeQuadrics(std::vector<Triangle>& triangles, std::vector<Vertex>& vertices);

/// Collapse errors of all edges.
void computeErrors(std::vector<Triangle>& triangles, const std::vector<Vertex>& vertices);

/// Lists the triangles of every vertex, vertex by vertex, each in the order of the triangles.
void listReferences(const std::vector<Triangle>& triangles, std::vector<Vertex>& vertices, std::vector<Ref>& refs);

/// Marks every vertex that is a corner of only one triangle of some fan.
void markBorders(const std::vector<Triangle>& triangles, std::vector<Vertex>& vertices, const std::vector<Ref>& refs);

/// All of it, for iteration 0; above, the references after what is deleted is removed.
void updateMesh(int iteration, std::vector<Triangle>& triangles, std::vector<Vertex>& vertices, std::vector<Ref>& refs);

}  // namespace MirelAlgorithms
