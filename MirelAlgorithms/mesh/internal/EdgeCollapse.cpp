#include <MirelAlgorithms/mesh/internal/EdgeCollapse.h>
#include <MirelAlgorithms/mesh/internal/FanSteps.h>
#include <MirelAlgorithms/mesh/internal/LargeVector.h>
#include <MirelAlgorithms/mesh/internal/MeshUpdate.h>

#include <xmmintrin.h>

#include <algorithm>
#include <cstddef>
#include <limits>

namespace MirelAlgorithms {
namespace {

// Starts loading a record of one or two cache lines: those of a fan lie anywhere, and are needed at once.
template <class Record>
void prefetch(const Record& record) {
  const char* const start = reinterpret_cast<const char*>(&record);
  _mm_prefetch(start, _MM_HINT_T0);
  if (sizeof(Record) > 64) _mm_prefetch(start + 64, _MM_HINT_T0);
}

bool breaks(const Spoke& a, const Spoke& b, const vec3f& normal) {
  if (isClearlyKept(a, b, normal)) return false;
  const vec3f d1 = quadric::normalized(a.direction), d2 = quadric::normalized(b.direction);
  return fan::isSliver(d1, d2) || fan::isTurned(d1, d2, normal);
}

// Larger fans are looked at one by one first: mostly one of the first faces keeps the edge from collapsing.
constexpr int mostGathered = 64;

constexpr double never = std::numeric_limits<double>::quiet_NaN();  // as an error: below no threshold

}  // namespace

EdgeCollapse::EdgeCollapse(std::vector<Triangle>& triangles, std::vector<Vertex>& vertices, std::vector<Ref>& refs)
    : triangles_(triangles), vertices_(vertices), refs_(refs), errors_(triangles.size()), dirty_(triangles.size()) {
  reserveLarge(faces_, triangles.size());
  reserveLarge(refs_, 6 * triangles.size());  // twice what the first update lists
  for (const Triangle& triangle : triangles) {
    faces_.push_back({{triangle.v[0], triangle.v[1], triangle.v[2]}, static_cast<int>(faces_.size()), {}, {}});
    anyTexture_ |= (triangle.attr & Triangle::hasTexture) != 0;
  }
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
  constexpr std::size_t block = 256;
  std::vector<double> errors;
  for (std::size_t first = 0; first < faces_.size(); first += block) {
    const std::size_t count = std::min(block, faces_.size() - first);
    edges_.clear();
    for (std::size_t i = first; i < first + count; ++i)
      for (int j = 0; j < 3; ++j) edges_.push_back({faces_[i].v[j], faces_[i].v[fan::after(j)]});
    edgeErrors(vertices_, edges_, errors);
    for (std::size_t i = 0; i < count; ++i) setErrors(first + i, &errors[3 * i]);
  }
}

void EdgeCollapse::setErrors(std::size_t i, const double* errors) {
  std::copy_n(errors, 3, faces_[i].err);
  errors_[i] = fan::smallest(errors);
  if (!triangles_[i].deleted) return;
  faces_[i].source = deleted;
  errors_[i] = never;
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
    const bool small = a.tcount + b.tcount <= mostGathered;
    if (small) prefetchFan(a);
    if (small) prefetchFan(b);
    vec3f p;
    quadric::collapseError(a, b, p);
    if (!small && (isBroken(a, i1, p) || isBroken(b, i0, p))) continue;
    if (mayMove(i0, i1, p)) return collapse(hasTexture(face), i0, i1, p);
  }
  return 0;
}

void EdgeCollapse::prefetchFan(const Vertex& vertex) const {
  const Ref* const refs = refs_.data() + vertex.tstart;
  for (int k = 0; k < vertex.tcount; ++k) prefetch(faces_[refs[k].tid]);
}

bool EdgeCollapse::isBroken(const Vertex& vertex, int other, const vec3f& p) const {
  for (int k = 0; k < vertex.tcount; ++k) {
    const Ref ref = refs_[vertex.tstart + k];
    const Face& face = faces_[ref.tid];
    if (face.source == deleted) continue;
    const int id1 = face.v[fan::after(ref.tvertex)], id2 = face.v[fan::after(fan::after(ref.tvertex))];
    if (id1 == other || id2 == other) continue;
    if (breaks(spoke(p, vertices_[id1].p), spoke(p, vertices_[id2].p), face.n)) return true;
  }
  return false;
}

bool EdgeCollapse::hasTexture(const Face& face) const {
  return anyTexture_ && (triangles_[face.source].attr & Triangle::hasTexture) != 0;
}

bool EdgeCollapse::mayMove(int i0, int i1, const vec3f& p) {
  neighbours_.clear();
  gatherFan(vertices_[i0], i1, fan0_);
  gatherFan(vertices_[i1], i0, fan1_);
  spokes_.clear();
  for (const int vertex : neighbours_.vertices()) spokes_.push_back(spoke(p, vertices_[vertex].p));
  return keepsShape(fan0_) && keepsShape(fan1_);
}

void EdgeCollapse::gatherFan(const Vertex& vertex, int other, Fan& fan) {
  fan.clear();
  for (int k = 0; k < vertex.tcount; ++k) {
    const Ref ref = refs_[vertex.tstart + k];
    const Face& face = faces_[ref.tid];
    if (face.source == deleted) continue;
    const int id1 = face.v[fan::after(ref.tvertex)], id2 = face.v[fan::after(fan::after(ref.tvertex))];
    prefetch(vertices_[id1]);
    if (id1 == other || id2 == other)
      fan.push_back({ref, goes, goes});
    else
      fan.push_back({ref, neighbours_.place(id1), neighbours_.place(id2)});
  }
}

bool EdgeCollapse::keepsShape(const Fan& fan) const {
  return std::none_of(fan.begin(), fan.end(), [&](const Member& member) {
    return member.first != goes && breaks(spokes_[member.first], spokes_[member.second], faces_[member.ref.tid].n);
  });
}

int EdgeCollapse::collapse(bool textured, int i0, int i1, const vec3f& p) {
  Vertex &a = vertices_[i0], &b = vertices_[i1];
  if (textured) {
    moveTexture(fan0_, p);
    moveTexture(fan1_, p);
  }
  a.p = p;
  a.q = b.q + a.q;
  computeSpokeErrors(i0);
  const std::size_t start = refs_.size();
  const int removed = handOver(i0, fan0_) + handOver(i0, fan1_);
  const int count = static_cast<int>(refs_.size() - start);
  if (count <= a.tcount)
    std::copy_n(refs_.data() + start, count, refs_.data() + a.tstart);
  else
    a.tstart = static_cast<int>(start);
  a.tcount = count;
  return removed;
}

void EdgeCollapse::computeSpokeErrors(int i0) {
  edges_.clear();
  for (const int vertex : neighbours_.vertices()) edges_.push_back({i0, vertex});
  edgeErrors(vertices_, edges_, spokeErrors_);
}

void EdgeCollapse::moveTexture(const Fan& fan, const vec3f& p) {
  for (const Member& member : fan) {
    if (member.first == goes) continue;
    const Face& face = faces_[member.ref.tid];
    fan::moveUv(triangles_[face.source].uvs, member.ref.tvertex, p, face.v, vertices_.data());
  }
}

int EdgeCollapse::handOver(int i0, const Fan& fan) {
  int removed = 0;
  for (const Member& member : fan) {
    const auto [t, corner] = member.ref;
    Face& face = faces_[t];
    if (face.source == deleted) continue;  // with the other end of the edge
    if (member.first == goes) {
      face.source = deleted;
      errors_[t] = never;
      ++removed;
      continue;
    }
    face.v[corner] = i0;
    dirty_[t] = 1;
    errors_[t] = updateErrors(face, corner, member);
    refs_.push_back(member.ref);
  }
  return removed;
}

// The error of an edge does not depend on its direction: both ends enter by sums, and by minima of errors that are
// never minus zero. That of the edge opposite to the corner is as it was, unless it was computed for other border
// flags.
double EdgeCollapse::updateErrors(Face& face, int corner, const Member& member) {
  const int next = fan::after(corner), last = fan::after(next);
  const int id1 = face.v[next], id2 = face.v[last];
  face.err[corner] = spokeErrors_[member.first];
  face.err[last] = spokeErrors_[member.second];
  vec3f position;
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
