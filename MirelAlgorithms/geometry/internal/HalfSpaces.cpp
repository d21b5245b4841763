#include <MirelAlgorithms/geometry/internal/HalfSpaces.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace MirelAlgorithms {
namespace {

using Vec3 = std::array<double, 3>;

constexpr int count = static_cast<int>(std::tuple_size_v<HalfSpaces>);
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double tolerance = 1e-12;  // of the scale of the problem
constexpr double parallel = 1e-13;   // length of what two unit normals differ by when they count as dependent

double dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

void addScaled(Vec3& a, double factor, const Vec3& b) {
  for (int i = 0; i < 3; ++i) a[i] += factor * b[i];
}

double scaleOf(const Vec3& v) { return std::max({std::abs(v[0]), std::abs(v[1]), std::abs(v[2])}); }

// The half-spaces with unit normals, so that all distances are lengths in space, component by component.
struct UnitPlanes {
  double x[count], y[count], z[count], distance[count];

  Vec3 normal(int plane) const { return {x[plane], y[plane], z[plane]}; }
  double excess(int plane, const Vec3& p) const {
    return x[plane] * p[0] + y[plane] * p[1] + z[plane] * p[2] + distance[plane];
  }
};

// False where a half-space is empty or not finite; one that is all of space becomes a plane that no point is beyond.
bool normalise(const HalfSpaces& halfSpaces, UnitPlanes& unit) {
  for (int i = 0; i < count; ++i) {
    Vec3 n = halfSpaces[i].normal;
    double d = halfSpaces[i].distance, square = dot(n, n);
    if (!(square > 1e-200 && square < 1e200)) {  // too far from 1 for its square, or no direction, or not finite
      const double largest = scaleOf(n);
      if (largest == 0.0) {
        if (!(d >= 0.0)) return false;
        d = 0.0;
        square = 1.0;
      } else {
        for (double& component : n) component /= largest;
        d /= largest;
        square = dot(n, n);
      }
    }
    const double factor = 1.0 / std::sqrt(square);
    unit.x[i] = n[0] * factor;
    unit.y[i] = n[1] * factor;
    unit.z[i] = n[2] * factor;
    unit.distance[i] = d * factor;
    if (!std::isfinite(unit.x[i] + unit.y[i] + unit.z[i] + unit.distance[i])) return false;
  }
  return true;
}

// The planes that the current point lies on, at most three, with their multipliers, and an orthonormal basis q of their
// normals: normal k = sum over i <= k of r[i][k] q[i].
struct ActiveSet {
  int size = 0;
  std::array<int, 3> planes;
  Vec3 multipliers;
  std::array<Vec3, 3> q;
  double r[3][3];

  // Splits a normal into its parts along the basis and the rest.
  Vec3 split(Vec3 normal, double (&along)[3]) const {
    std::fill_n(along, 3, 0.0);
    double before = dot(normal, normal), after = 0.0;
    for (;; before = after) {
      for (int i = 0; i < size; ++i) {
        const double part = dot(q[i], normal);
        along[i] += part;
        addScaled(normal, -part, q[i]);
      }
      after = dot(normal, normal);
      if (after >= 0.25 * before || after <= parallel * parallel) return normal;  // else rounding has left its mark
    }
  }

  // Solves r x = along.
  Vec3 backSubstitute(const double (&along)[3]) const {
    Vec3 x{};
    for (int k = size - 1; k >= 0; --k) {
      double rest = along[k];
      for (int j = k + 1; j < size; ++j) rest -= r[k][j] * x[j];
      x[k] = rest / r[k][k];
    }
    return x;
  }

  void add(int plane, const Vec3& normal, double multiplier) {
    double along[3];
    const Vec3 rest = split(normal, along);
    const double length = std::sqrt(dot(rest, rest));
    for (int i = 0; i < size; ++i) r[i][size] = along[i];
    r[size][size] = length;
    for (int i = 0; i < 3; ++i) q[size][i] = rest[i] / length;
    planes[size] = plane;
    multipliers[size] = multiplier;
    ++size;
  }

  void remove(int position, const UnitPlanes& all) {
    const ActiveSet before = *this;
    size = 0;
    for (int k = 0; k < before.size; ++k)
      if (k != position) add(before.planes[k], all.normal(before.planes[k]), before.multipliers[k]);
  }
};

class Program {
 public:
  explicit Program(const UnitPlanes& planes) : planes_(planes) {
    for (const double d : planes_.distance) scale_ = std::max(scale_, std::abs(d));
  }

  bool hasSolution() {
    for (int plane = mostViolated(); plane >= 0; plane = mostViolated())
      if (!reach(plane)) return false;
    return true;
  }

 private:
  // -1 when the current point lies in all half-spaces.
  int mostViolated() const {
    double excess[count];
    for (int plane = 0; plane < count; ++plane) excess[plane] = planes_.excess(plane, x_);
    const double* const least = std::min_element(excess, excess + count);
    return *least < -tolerance * std::max(scale_, scaleOf(x_)) ? static_cast<int>(least - excess) : -1;
  }

  // Moves to the optimum over the active planes and this one, which takes its place among them; active planes that
  // stand in the way leave. False when no point of the active planes reaches the half-space.
  bool reach(int plane) {
    const Vec3 normal = planes_.normal(plane);
    double multiplier = 0.0;
    for (; steps_ < mostSteps; ++steps_) {
      double along[3];
      Vec3 direction = active_.split(normal, along);
      const Vec3 change = active_.backSubstitute(along);
      const double slope = active_.size == 3 ? 0.0 : dot(direction, direction);
      const bool dependent = slope <= parallel * parallel;

      int blocking = -1;
      double step = infinity;
      for (int k = 0; k < active_.size; ++k)
        if (change[k] > 0.0 && active_.multipliers[k] / change[k] < step) {
          step = active_.multipliers[k] / change[k];
          blocking = k;
        }
      const double fullStep = dependent ? infinity : -planes_.excess(plane, x_) / slope;
      if (blocking < 0 && dependent) return false;

      const bool full = fullStep <= step;
      step = std::min(step, fullStep);
      if (!dependent) addScaled(x_, step, direction);
      for (int k = 0; k < active_.size; ++k) active_.multipliers[k] -= step * change[k];
      multiplier += step;
      if (full) {
        active_.add(plane, normal, multiplier);
        ++steps_;
        return true;
      }
      active_.remove(blocking, planes_);
    }
    return false;
  }

  const UnitPlanes& planes_;
  double scale_ = 1.0;
  Vec3 x_ = {-1.0, -1.0, -1.0};  // the optimum without constraints
  ActiveSet active_;
  int steps_ = 0;
};

}  // namespace

bool haveCommonPoint(const HalfSpaces& halfSpaces) {
  UnitPlanes planes;
  return normalise(halfSpaces, planes) && Program(planes).hasSolution();
}

}  // namespace MirelAlgorithms
