/// Simplification as plainly as it can be said: every error, normal and neighbour computed where it is needed. Shares
/// no code with the library but the records; the library must give the same bits.
#pragma once

#include <MirelAlgorithms/mesh/MeshSimplification.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <vector>

namespace literal {

using namespace MirelAlgorithms;

inline double dot(vec3f a, vec3f b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline vec3f cross(vec3f a, vec3f b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
inline vec3f unit(vec3f a) {
  const double length = std::sqrt(dot(a, a));
  return {a.x / length, a.y / length, a.z / length};
}
inline double smallest(double a, double b, double c) {
  const double ofLast = b < c ? b : c;
  return a < ofLast ? a : ofLast;
}

inline double errorAt(const double* q, vec3f p) {
  const auto [x, y, z] = p;
  return q[0] * x * x + 2 * q[1] * x * y + 2 * q[2] * x * z + 2 * q[3] * x + q[4] * y * y + 2 * q[5] * y * z +
         2 * q[6] * y + q[7] * z * z + 2 * q[8] * z + q[9];
}

inline double det(const double* q, int a, int b, int c, int d, int e, int f, int g, int h, int i) {
  return q[a] * q[e] * q[i] + q[c] * q[d] * q[h] + q[b] * q[f] * q[g] - q[c] * q[e] * q[g] - q[a] * q[f] * q[h] -
         q[b] * q[d] * q[i];
}

struct Mesh {
  std::vector<Triangle> triangles;
  std::vector<Vertex> vertices;
  std::vector<Ref> refs;

  double error(int v1, int v2, vec3f& p) const {
    const Vertex &a = vertices[v1], &b = vertices[v2];
    double q[10];
    for (int i = 0; i < 10; ++i) q[i] = a.q.m[i] + b.q.m[i];
    const double d = det(q, 0, 1, 2, 1, 4, 5, 2, 5, 7);
    if (d != 0 && (a.border & b.border) == 0) {
      p.x = -1 / d * det(q, 1, 2, 3, 4, 5, 6, 5, 7, 8);
      p.y = 1 / d * det(q, 0, 2, 3, 1, 5, 6, 2, 7, 8);
      p.z = -1 / d * det(q, 0, 1, 3, 1, 4, 6, 2, 5, 8);
      return errorAt(q, p);
    }
    const vec3f p1 = a.p, p2 = b.p, p3{(p1.x + p2.x) / 2, (p1.y + p2.y) / 2, (p1.z + p2.z) / 2};
    const double e1 = errorAt(q, p1), e2 = errorAt(q, p2), e3 = errorAt(q, p3), least = smallest(e1, e2, e3);
    if (e1 == least) p = p1;
    if (e2 == least) p = p2;
    if (e3 == least) p = p3;
    return least;
  }

  void setErrors(Triangle& t) const {
    vec3f p;
    for (int j = 0; j < 3; ++j) t.err[j] = error(t.v[j], t.v[(j + 1) % 3], p);
    t.err[3] = smallest(t.err[0], t.err[1], t.err[2]);
  }

  void addPlanes() {
    for (Vertex& v : vertices) v.q = {};
    for (Triangle& t : triangles) {
      const vec3f p0 = vertices[t.v[0]].p;
      t.n = unit(cross(vertices[t.v[1]].p - p0, vertices[t.v[2]].p - p0));
      const double plane[] = {t.n.x, t.n.y, t.n.z, -dot(t.n, p0)};
      for (const int number : t.v)
        for (int row = 0, i = 0; row < 4; ++row)
          for (int column = row; column < 4; ++column, ++i) vertices[number].q.m[i] += plane[row] * plane[column];
    }
    for (Triangle& t : triangles) setErrors(t);
  }

  void listReferences() {
    std::vector<std::vector<Ref>> fans(vertices.size());
    for (std::size_t i = 0; i < triangles.size(); ++i)
      for (int j = 0; j < 3; ++j) fans[triangles[i].v[j]].push_back({static_cast<int>(i), j});
    refs.clear();
    for (std::size_t i = 0; i < vertices.size(); ++i) {
      vertices[i].tstart = static_cast<int>(refs.size());
      vertices[i].tcount = static_cast<int>(fans[i].size());
      refs.insert(refs.end(), fans[i].begin(), fans[i].end());
    }
  }

  void markBorders() {
    for (Vertex& v : vertices) v.border = 0;
    for (const Vertex& v : vertices) {
      std::map<int, int> uses;
      for (int k = 0; k < v.tcount; ++k)
        for (const int number : triangles[refs[v.tstart + k].tid].v) ++uses[number];
      for (const auto& [number, count] : uses)
        if (count == 1) vertices[number].border = 1;
    }
  }

  void removeDeleted() {
    std::erase_if(triangles, [](const Triangle& t) { return t.deleted; });
  }

  void update(int iteration) {
    if (iteration > 0) removeDeleted();
    if (iteration == 0) addPlanes();
    listReferences();
    if (iteration == 0) markBorders();
  }

  bool flipped(vec3f p, int other, const Vertex& v, std::vector<int>& deleted) const {
    for (int k = 0; k < v.tcount; ++k) {
      const Ref ref = refs[v.tstart + k];
      const Triangle& t = triangles[ref.tid];
      if (t.deleted) continue;
      const int id1 = t.v[(ref.tvertex + 1) % 3], id2 = t.v[(ref.tvertex + 2) % 3];
      deleted[k] = id1 == other || id2 == other;
      if (deleted[k]) continue;
      const vec3f d1 = unit(vertices[id1].p - p), d2 = unit(vertices[id2].p - p);
      if (std::fabs(dot(d1, d2)) > 0.999 || dot(unit(cross(d1, d2)), t.n) < 0.2) return true;
    }
    return false;
  }

  void updateUvs(const Vertex& v, vec3f p, const std::vector<int>& deleted) {
    for (int k = 0; k < v.tcount; ++k) {
      const Ref ref = refs[v.tstart + k];
      Triangle& t = triangles[ref.tid];
      if (t.deleted || deleted[k]) continue;
      const vec3f a = vertices[t.v[0]].p, va = vertices[t.v[1]].p - a, vb = vertices[t.v[2]].p - a, vc = p - a;
      const double d00 = dot(va, va), d01 = dot(va, vb), d11 = dot(vb, vb), d20 = dot(vc, va), d21 = dot(vc, vb);
      const double inv = 1 / (d00 * d11 - d01 * d01);
      const double y = (d11 * d20 - d01 * d21) * inv, z = (d00 * d21 - d01 * d20) * inv, x = 1 - y - z;
      t.uvs[ref.tvertex] = t.uvs[0] * x + t.uvs[1] * y + t.uvs[2] * z;
    }
  }

  void updateTriangles(int i0, const Vertex& v, const std::vector<int>& deleted, int& count) {
    for (int k = 0; k < v.tcount; ++k) {
      const Ref ref = refs[v.tstart + k];
      Triangle& t = triangles[ref.tid];
      if (t.deleted) continue;
      if (deleted[k]) {
        t.deleted = 1;
        ++count;
        continue;
      }
      t.v[ref.tvertex] = i0;
      t.dirty = 1;
      setErrors(t);
      refs.push_back(ref);
    }
  }

  bool collapse(bool textured, int i0, int i1, int& count) {
    Vertex &a = vertices[i0], &b = vertices[i1];
    if (a.border != b.border) return false;
    vec3f p;
    error(i0, i1, p);
    std::vector<int> deleted0(a.tcount), deleted1(b.tcount);
    if (flipped(p, i1, a, deleted0) || flipped(p, i0, b, deleted1)) return false;
    if (textured) updateUvs(a, p, deleted0);
    if (textured) updateUvs(b, p, deleted1);
    a.p = p;
    a.q = b.q + a.q;
    const int start = static_cast<int>(refs.size());
    updateTriangles(i0, a, deleted0, count);
    updateTriangles(i0, b, deleted1, count);
    const int size = static_cast<int>(refs.size()) - start;
    if (size > a.tcount) a.tstart = start;
    for (int k = 0; k < size; ++k) refs[a.tstart + k] = refs[start + k];
    a.tcount = size;
    return true;
  }

  int pass(double threshold, int most) {
    int count = 0;
    for (Triangle& t : triangles) t.dirty = 0;
    for (const Triangle& t : triangles) {
      if (!(t.err[3] <= threshold) || t.deleted || t.dirty) continue;
      for (int j = 0; j < 3; ++j)
        if (t.err[j] < threshold && collapse(t.attr & 4, t.v[j], t.v[(j + 1) % 3], count)) break;
      if (count >= most) break;
    }
    return count;
  }

  void simplify(int target, double aggressiveness) {
    for (Triangle& t : triangles) t.deleted = 0;
    int left = static_cast<int>(triangles.size());
    for (int i = 0; i < 100 && left > target; ++i) {
      const double threshold = 0.000000001 * std::pow(double(i + 3), aggressiveness);
      if (i % 5 == 0) update(i);
      if (i % 5 == 0) std::printf("iteration %d - triangles %d threshold %g\n", i, left, threshold);
      left -= pass(threshold, left - target);
    }
    compact();
  }

  void simplifyLossless() {
    for (int i = 0; i < 9999; ++i) {
      update(i);
      std::printf("lossless iteration %d\n", i);
      if (pass(2.220446049250313e-16, 1 << 30) == 0) break;
    }
    compact();
  }

  void compact() {
    removeDeleted();
    for (Vertex& v : vertices) v.tcount = 0;
    for (const Triangle& t : triangles)
      for (const int number : t.v) vertices[number].tcount = 1;
    int count = 0;
    for (Vertex& v : vertices)
      if (v.tcount) vertices[v.tstart = count++].p = v.p;
    for (Triangle& t : triangles)
      for (int& number : t.v) number = vertices[number].tstart;
    vertices.resize(count);
  }
};

}  // namespace literal
