/// Passes of edge collapses over a mesh.
#pragma once

#include <MirelAlgorithms/mesh/MeshRecords.h>
#include <MirelAlgorithms/mesh/internal/EdgeErrors.h>
#include <MirelAlgorithms/mesh/internal/FanNeighbours.h>
#include <MirelAlgorithms/mesh/internal/Spoke.h>

#include <cstddef>
#include <vector>

namespace MirelAlgorithms {

/// Does what the steps in FanSteps.h do, with the same results, on one cache line per triangle. Besides, errors are
/// looked at in an array of their own, and what several triangles of a fan share is computed once. Vertex numbers are
/// not checked.
class EdgeCollapse {
 public:
  /// Takes what it needs of the triangles; vertices and references are worked on in place.
  EdgeCollapse(std::vector<Triangle>& triangles, std::vector<Vertex>& vertices, std::vector<Ref>& refs);

  /// Updates the mesh. Needed at iteration 0, before the first pass, and useful from time to time.
  void update(int iteration);

  /// Collapses edges with an error below `threshold` until at least `most` triangles are deleted; returns how many.
  int pass(double threshold, long long most);

  /// Brings the triangles up to date, without those that are deleted.
  void finish();

 private:
  static constexpr int deleted = -1;

  struct alignas(64) Face {
    int v[3];
    int source;  // number of the triangle it stands for; `deleted`
    double err[3];
    vec3f n;
  };

  // A face around one end of the edge.
  struct Member {
    Ref ref;
    int first, second;  // places of its other two vertices among the neighbours, or `goes`
  };
  static constexpr int goes = -1;  // the face has both ends of the edge
  using Fan = std::vector<Member>;

  void computeErrors();
  void setErrors(std::size_t i, const double* errors);
  void settleBorders(const std::vector<int>& before);
  void removeDeleted();
  int collapseOneEdge(const Face& face, double threshold);
  void prefetchFan(const Vertex& vertex) const;
  bool isBroken(const Vertex& vertex, int other, const vec3f& p) const;
  bool mayMove(int i0, int i1, const vec3f& p);
  void gatherFan(const Vertex& vertex, int other, Fan& fan);
  bool keepsShape(const Fan& fan) const;
  bool hasTexture(const Face& face) const;
  int collapse(bool textured, int i0, int i1, const vec3f& p);
  void computeSpokeErrors(int i0);
  void moveTexture(const Fan& fan, const vec3f& p);
  int handOver(int i0, const Fan& fan);
  double updateErrors(Face& face, int corner, const Member& member);

  std::vector<Triangle>& triangles_;
  std::vector<Vertex>& vertices_;
  std::vector<Ref>& refs_;
  std::vector<Face> faces_;
  std::vector<double> errors_;            // smallest of each face; NaN when it is deleted
  std::vector<unsigned char> dirty_;      // faces changed in this pass
  std::vector<unsigned char> unsettled_;  // vertices whose border changed after the errors were computed
  bool anyTexture_ = false;

  // Around the edge at hand.
  Fan fan0_, fan1_;
  FanNeighbours neighbours_;
  std::vector<Spoke> spokes_;  // from the position that the edge may collapse to, by place
  std::vector<Edge> edges_;
  std::vector<double> spokeErrors_;  // of the edges around the vertex that it became, by place
};

}  // namespace MirelAlgorithms
