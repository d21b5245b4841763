#include <MirelAlgorithms/mesh/internal/EdgeCollapse.h>
#include <MirelAlgorithms/mesh/internal/FanSteps.h>

#include <algorithm>
#include <cstddef>

namespace MirelAlgorithms {

int EdgeCollapse::pass(double threshold, long long most) {
  for (Triangle& triangle : triangles_) triangle.dirty = 0;
  int deleted = 0;
  for (Triangle& triangle : triangles_) {
    if (!(triangle.err[3] <= threshold) || triangle.deleted || triangle.dirty) continue;
    deleted += collapseOneEdge(triangle, threshold);
    if (deleted >= most) break;
  }
  return deleted;
}

int EdgeCollapse::collapseOneEdge(Triangle& triangle, double threshold) {
  for (int j = 0; j < 3; ++j) {
    if (!(triangle.err[j] < threshold)) continue;
    const int i0 = triangle.v[j], i1 = triangle.v[fan::after(j)];
    const Vertex &a = vertices_[i0], &b = vertices_[i1];
    if (a.border != b.border) continue;
    vec3f p;
    quadric::collapseError(a, b, p);
    if (mayMove(i0, i1, p)) return collapse((triangle.attr & Triangle::hasTexture) != 0, i0, i1, p);
  }
  return 0;
}

bool EdgeCollapse::mayMove(int i0, int i1, const vec3f& p) {
  const Vertex &a = vertices_[i0], &b = vertices_[i1];
  deleted0_.resize(a.tcount);
  deleted1_.resize(b.tcount);
  return !fan::flips(p, i1, a, refs_.data(), triangles_.data(), vertices_.data(), deleted0_.data()) &&
         !fan::flips(p, i0, b, refs_.data(), triangles_.data(), vertices_.data(), deleted1_.data());
}

int EdgeCollapse::collapse(bool textured, int i0, int i1, const vec3f& p) {
  Vertex &a = vertices_[i0], &b = vertices_[i1];
  if (textured) {
    fan::blendUvs(a, p, deleted0_.data(), refs_.data(), triangles_.data(), vertices_.data());
    fan::blendUvs(b, p, deleted1_.data(), refs_.data(), triangles_.data(), vertices_.data());
  }
  a.p = p;
  a.q = b.q + a.q;
  const std::size_t start = refs_.size();
  const int deleted = fan::handOver(i0, a, deleted0_.data(), triangles_, vertices_, refs_) +
                      fan::handOver(i0, b, deleted1_.data(), triangles_, vertices_, refs_);
  const int count = static_cast<int>(refs_.size() - start);
  if (count <= a.tcount)
    std::copy_n(refs_.data() + start, count, refs_.data() + a.tstart);
  else
    a.tstart = static_cast<int>(start);
  a.tcount = count;
  return deleted;
}

}  // namespace MirelAlgorithms
