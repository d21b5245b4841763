/// Collapse errors of many edges.
#pragma once

#include <MirelAlgorithms/mesh/MeshRecords.h>

#include <vector>

namespace MirelAlgorithms {

/// Numbers of the vertices at the ends of an edge.
struct Edge {
  int a, b;
};

/// `quadric::collapseError` of every edge, several at a time where the processor can.
void edgeErrors(const std::vector<Vertex>& vertices, const std::vector<Edge>& edges, std::vector<double>& errors);

}  // namespace MirelAlgorithms
