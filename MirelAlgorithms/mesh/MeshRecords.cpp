#include <MirelAlgorithms/mesh/MeshRecords.h>
#include <MirelAlgorithms/mesh/internal/QuadricError.h>

namespace MirelAlgorithms {

double vec3f::dot(const vec3f& b) const { return quadric::dot(*this, b); }
vec3f vec3f::cross(const vec3f& b) const { return quadric::cross(*this, b); }
vec3f vec3f::normalized() const { return quadric::normalized(*this); }

double SymetricMatrix::det(int a11, int a12, int a13, int a21, int a22, int a23, int a31, int a32, int a33) const {
  return quadric::determinant(m[a11], m[a12], m[a13], m[a21], m[a22], m[a23], m[a31], m[a32], m[a33]);
}

}  // namespace MirelAlgorithms
