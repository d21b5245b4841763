#include <MirelAlgorithms/mesh/internal/EdgeCollapse.h>
#include <MirelAlgorithms/mesh/internal/FanSteps.h>
#include <MirelAlgorithms/mesh/internal/MeshUpdate.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

namespace MirelAlgorithms {
namespace {

constexpr double never = std::numeric_limits<double>::quiet_NaN();  // as an error: below no threshold

}  // namespace

EdgeCollapse::EdgeCollapse(std::vector<Triangle>& triangles, std::vector<Vertex>& vertices, std::vector<Ref>& refs)
    : triangles_(triangles), vertices_(vertices), refs_(refs), errors_(triangles.size()), dirty_(triangles.size()) {
  faces_.reserve(triangles.size());
  for (const Triangle& triangle : triangles)
    faces_.push_back({{triangle.v[0], triangle.v[1], triangle.v[2]}, static_cast<int>(faces_.size()), {}, {}});
}

void EdgeCollapse::update(int iteration) {
  if (iteration > 0) {
    removeDeleted();
    listReferences(faces_, vertices_, refs_);
    return;
  }
  std::vector<int> borders;
  borders.reserve(vertices_.size());
  for (const Vertex& vertex : vertices_) borders.push_back(vertex.border);
  computeQuadrics(faces_, vertices_);
  computeErrors();
  listReferences(faces_, vertices_, refs_);
  markBorders(faces_, vertices_, refs_);
  settleBorders(borders);
}

void EdgeCollapse::computeErrors() {
  for (std::size_t i = 0; i < faces_.size(); ++i) {
    errors_[i] = fan::setErrors(faces_[i], vertices_.data());
    if (!triangles_[i].deleted) continue;
    faces_[i].source = deleted;
    errors_[i] = never;
  }
}

void EdgeCollapse::settleBorders(const std::vector<int>& before) {
  unsettled_.resize(vertices_.size());
  for (std::size_t i = 0; i < vertices_.size(); ++i) unsettled_[i] = vertices_[i].border != before[i];
}

void EdgeCollapse::removeDeleted() {
  std::size_t count = 0;
  for (std::size_t i = 0; i < faces_.size(); ++i) {
    if (faces_[i].source == deleted) continue;
    faces_[count] = faces_[i];
    errors_[count] = errors_[i];
    dirty_[count++] = dirty_[i];
  }
  faces_.resize(count);
  errors_.resize(count);
  dirty_.resize(count);
}

int EdgeCollapse::pass(double threshold, long long most) {
  std::fill(dirty_.begin(), dirty_.end(), 0);
  int count = 0;
  for (std::size_t i = 0; i < faces_.size(); ++i) {
    if (!(errors_[i] <= threshold) || dirty_[i]) continue;
    count += collapseOneEdge(faces_[i], threshold);
    if (count >= most) break;
  }
  return count;
}

int EdgeCollapse::collapseOneEdge(const Face& face, double threshold) {
  for (int j = 0; j < 3; ++j) {
    if (!(face.err[j] < threshold)) continue;
    const int i0 = face.v[j], i1 = face.v[fan::after(j)];
    const Vertex &a = vertices_[i0], &b = vertices_[i1];
    if (a.border != b.border) continue;
    vec3f p;
    quadric::collapseError(a, b, p);
    if (mayMove(i0, i1, p)) return collapse((triangles_[face.source].attr & Triangle::hasTexture) != 0, i0, i1, p);
  }
  return 0;
}

bool EdgeCollapse::mayMove(int i0, int i1, const vec3f& p) {
  spokes_.clear();
  return !flips(p, i1, vertices_[i0], goes0_) && !flips(p, i0, vertices_[i1], goes1_);
}

bool EdgeCollapse::flips(const vec3f& p, int other, const Vertex& vertex, std::vector<int>& goes) {
  goes.resize(vertex.tcount);
  for (int k = 0; k < vertex.tcount; ++k) {
    const Ref& ref = refs_[vertex.tstart + k];
    const Face& face = faces_[ref.tid];
    if (face.source == deleted) continue;
    const int id1 = face.v[fan::after(ref.tvertex)], id2 = face.v[fan::after(fan::after(ref.tvertex))];
    goes[k] = id1 == other || id2 == other;
    if (!goes[k] && breaks(face, p, id1, id2)) return true;
  }
  return false;
}

bool EdgeCollapse::breaks(const Face& face, const vec3f& p, int id1, int id2) {
  const auto toVertex = [&](int id) { return spoke(p, vertices_[id].p); };
  const Spoke a = spokes_.of(id1, toVertex), b = spokes_.of(id2, toVertex);
  if (isClearlyKept(a, b, face.n)) return false;
  const vec3f d1 = quadric::normalized(a.direction), d2 = quadric::normalized(b.direction);
  return fan::isSliver(d1, d2) || fan::isTurned(d1, d2, face.n);
}

int EdgeCollapse::collapse(bool textured, int i0, int i1, const vec3f& p) {
  Vertex &a = vertices_[i0], &b = vertices_[i1];
  if (textured) {
    moveTexture(a, p, goes0_);
    moveTexture(b, p, goes1_);
  }
  a.p = p;
  a.q = b.q + a.q;
  spokeErrors_.clear();
  const std::size_t start = refs_.size();
  const int removed = handOver(i0, a, goes0_) + handOver(i0, b, goes1_);
  const int count = static_cast<int>(refs_.size() - start);
  if (count <= a.tcount)
    std::copy_n(refs_.data() + start, count, refs_.data() + a.tstart);
  else
    a.tstart = static_cast<int>(start);
  a.tcount = count;
  return removed;
}

void EdgeCollapse::moveTexture(const Vertex& vertex, const vec3f& p, const std::vector<int>& goes) {
  for (int k = 0; k < vertex.tcount; ++k) {
    const Ref& ref = refs_[vertex.tstart + k];
    const Face& face = faces_[ref.tid];
    if (face.source != deleted && !goes[k])
      fan::moveUv(triangles_[face.source].uvs, ref.tvertex, p, face.v, vertices_.data());
  }
}

int EdgeCollapse::handOver(int i0, const Vertex& vertex, const std::vector<int>& goes) {
  int count = 0;
  for (int k = 0; k < vertex.tcount; ++k) {
    const Ref ref = refs_[vertex.tstart + k];
    Face& face = faces_[ref.tid];
    if (face.source == deleted) continue;
    if (goes[k]) {
      face.source = deleted;
      errors_[ref.tid] = never;
      ++count;
      continue;
    }
    face.v[ref.tvertex] = i0;
    dirty_[ref.tid] = 1;
    errors_[ref.tid] = updateErrors(face, ref.tvertex);
    refs_.push_back(ref);
  }
  return count;
}

// The error of an edge does not depend on its direction: both ends enter by sums, and by minima of errors that are
// never minus zero. That of the edge opposite to the corner is as it was, unless it was computed for other border
// flags.
double EdgeCollapse::updateErrors(Face& face, int corner) {
  const int next = fan::after(corner), last = fan::after(next);
  const int i0 = face.v[corner], id1 = face.v[next], id2 = face.v[last];
  vec3f position;
  const auto toVertex = [&](int id) { return quadric::collapseError(vertices_[i0], vertices_[id], position); };
  face.err[corner] = spokeErrors_.of(id1, toVertex);
  face.err[last] = spokeErrors_.of(id2, toVertex);
  if (unsettled_[id1] || unsettled_[id2])
    face.err[next] = quadric::collapseError(vertices_[id1], vertices_[id2], position);
  return fan::smallest(face.err);
}

void EdgeCollapse::finish() {
  removeDeleted();
  for (std::size_t i = 0; i < faces_.size(); ++i) {
    const Face& face = faces_[i];
    Triangle& triangle = triangles_[i] = triangles_[face.source];
    std::copy_n(face.v, 3, triangle.v);
    std::copy_n(face.err, 3, triangle.err);
    triangle.err[3] = errors_[i];
    triangle.deleted = 0;
    triangle.dirty = dirty_[i];
    triangle.n = face.n;
  }
  triangles_.resize(faces_.size());
}

}  // namespace MirelAlgorithms
