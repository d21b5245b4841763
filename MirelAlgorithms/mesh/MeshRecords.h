/// What a triangle mesh is made of.
#pragma once

#include <MirelAlgorithms/Export.h>

namespace MirelAlgorithms {

/// Three doubles: a position, a normal, texture coordinates (the third is not used) or barycentric weights. Infinities
/// and NaN are carried through like any other value. The longer formulas are compiled here and not in the header, so
/// that a caller's compiler flags cannot change their rounding.
struct vec3f {
  /// The components. @{
  double x = 0, y = 0, z = 0;
  /// @}

  /// Component by component. @{
  vec3f operator+(const vec3f& b) const { return {x + b.x, y + b.y, z + b.z}; }
  vec3f operator-(const vec3f& b) const { return {x - b.x, y - b.y, z - b.z}; }
  vec3f operator*(double scale) const { return {x * scale, y * scale, z * scale}; }
  /// @}

  /// x b.x + y b.y + z b.z, summed in this order.
  MIREL_API double dot(const vec3f& b) const;

  /// The vector at right angles to both, by the right-hand rule.
  MIREL_API vec3f cross(const vec3f& b) const;

  /// Each component divided by the Euclidean length; NaN for the zero vector.
  MIREL_API vec3f normalized() const;
};

/// A quadric: the symmetric 4 x 4 matrix Q of the squared distance (x, y, z, 1) Q (x, y, z, 1)^T from a plane or from
/// several planes together (Garland and Heckbert, "Surface simplification using quadric error metrics", SIGGRAPH 1997).
/// The ten coefficients stand row by row:
///
///     0 1 2 3
///       4 5 6
///         7 8
///           9
struct SymetricMatrix {
  double m[10] = {};  ///< the coefficients

  /// All zero: no plane yet.
  SymetricMatrix() = default;

  /// From its coefficients.
  SymetricMatrix(double m0, double m1, double m2, double m3, double m4, double m5, double m6, double m7, double m8,
                 double m9)
      : m{m0, m1, m2, m3, m4, m5, m6, m7, m8, m9} {}

  /// Of the plane a x + b y + c z + d = 0; distances are in its units when (a, b, c) has length 1.
  SymetricMatrix(double a, double b, double c, double d)
      : m{a * a, a * b, a * c, a * d, b * b, b * c, b * d, c * c, c * d, d * d} {}

  /// Coefficient i, 0 to 9; not checked.
  double operator[](int i) const { return m[i]; }

  /// Coefficient by coefficient: the squared distances add.
  SymetricMatrix operator+(const SymetricMatrix& b) const {
    SymetricMatrix sum;
    for (int i = 0; i < 10; ++i) sum.m[i] = m[i] + b.m[i];
    return sum;
  }

  /// Determinant of the 3 x 3 matrix whose elements are the coefficients with these numbers, 0 to 9, not checked. By
  /// the rule of Sarrus, from left to right:
  ///
  ///     a11 a22 a33 + a13 a21 a32 + a12 a23 a31 - a13 a22 a31 - a11 a23 a32 - a12 a21 a33
  MIREL_API double det(int a11, int a12, int a13, int a21, int a22, int a23, int a31, int a32, int a33) const;
};

/// A triangle of a mesh.
struct Triangle {
  static constexpr int hasTexture = 4;  ///< bit of `attr`

  int v[3] = {};       ///< numbers of its vertices va, vb, vc, from 0
  double err[4] = {};  ///< error of collapsing the edges (va, vb), (vb, vc), (vc, va), and the smallest of them
  int deleted = 0;     ///< 1 when a collapse removed it
  int dirty = 0;       ///< 1 when the current pass of simplification changed it
  int attr = 0;        ///< bits
  vec3f n;             ///< unit normal
  vec3f uvs[3];        ///< texture coordinates of the corners
  int material = -1;   ///< number of its name in the mesh's list; -1: none
};

/// A vertex of a mesh.
struct Vertex {
  vec3f p;           ///< position
  int tstart = 0;    ///< the first of its references to triangles
  int tcount = 0;    ///< how many references it has
  SymetricMatrix q;  ///< sum of the quadrics of the planes around it
  int border = 0;    ///< 1 on an open border
};

/// That a vertex is a corner of a triangle.
struct Ref {
  int tid = 0;      ///< number of the triangle
  int tvertex = 0;  ///< the corner, 0 to 2
};

}  // namespace MirelAlgorithms
