#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/geometry/internal/LatticeScore.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace MirelAlgorithms {
namespace {

constexpr std::size_t blockSize = 256;

// One weight for each point, 0 for those outside. Branches would keep the loop from becoming vector code.
MIREL_ALWAYS_INLINE void weigh(const Vec3d<double>* points, std::size_t count, const Mat4d& m, const ViewLimits& limits,
                               double* weights) {
  const double m0 = m[0], m1 = m[1], m2 = m[2], m4 = m[4], m5 = m[5], m6 = m[6], m8 = m[8], m9 = m[9], m10 = m[10],
               m12 = m[12], m13 = m[13], m14 = m[14];
  const double nearest = limits.near_, farthest = limits.far_, tx = limits.tangentX, ty = limits.tangentY;
  for (std::size_t i = 0; i < count; ++i) {
    const double px = points[i].x, py = points[i].y, pz = points[i].z;
    const double x = m0 * px + m4 * py + m8 * pz + m12;
    const double y = m1 * px + m5 * py + m9 * pz + m13;
    const double z = m2 * px + m6 * py + m10 * pz + m14;
    const double weight = 1.0 / std::sqrt(x * x + y * y + z * z);
    const int inRange = int{nearest <= z} & int{z <= farthest};
    const int inSides = int{std::abs(x / z) < tx} & int{std::abs(y / z) < ty};
    weights[i] = (inRange & inSides) != 0 ? weight : 0.0;
  }
}

void weighBaseline(const Vec3d<double>* points, std::size_t count, const Mat4d& m, const ViewLimits& limits,
                   double* weights) {
  weigh(points, count, m, limits, weights);
}

MIREL_TARGET_AVX2 void weighAvx2(const Vec3d<double>* points, std::size_t count, const Mat4d& m,
                                 const ViewLimits& limits, double* weights) {
  weigh(points, count, m, limits, weights);
}

}  // namespace

double latticeScore(const std::vector<Vec3d<double>>& points, const Mat4d& transform, const ViewLimits& limits) {
  const auto weighBlock = cpuVariant() >= CpuVariant::avx2 ? weighAvx2 : weighBaseline;
  double score = 0.0, weights[blockSize];
  for (std::size_t begin = 0; begin < points.size(); begin += blockSize) {
    const std::size_t count = std::min(blockSize, points.size() - begin);
    weighBlock(points.data() + begin, count, transform, limits, weights);
    for (std::size_t i = 0; i < count; ++i) score += weights[i];
  }
  return score;
}

}  // namespace MirelAlgorithms
