/// One pass of edge collapses over a mesh. Vertex numbers are not checked.
#pragma once

#include <MirelAlgorithms/mesh/MeshRecords.h>

#include <vector>

namespace MirelAlgorithms {

class EdgeCollapse {
 public:
  EdgeCollapse(std::vector<Triangle>& triangles, std::vector<Vertex>& vertices, std::vector<Ref>& refs)
      : triangles_(triangles), vertices_(vertices), refs_(refs) {}

  /// Collapses edges with an error below `threshold` until at least `most` triangles are deleted; returns how many.
  int pass(double threshold, long long most);

 private:
  int collapseOneEdge(Triangle& triangle, double threshold);
  bool mayMove(int i0, int i1, const vec3f& p);
  int collapse(bool textured, int i0, int i1, const vec3f& p);

  std::vector<Triangle>& triangles_;
  std::vector<Vertex>& vertices_;
  std::vector<Ref>& refs_;
  std::vector<int> deleted0_, deleted1_;  // which triangles around the ends of the edge go with it
};

}  // namespace MirelAlgorithms
