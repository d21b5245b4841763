#include <MirelAlgorithms/filters/MayhonyAHRS.h>
#include <gtest/gtest.h>

#include <array>
#include <cfloat>

#include "SameBits.h"

using MirelAlgorithms::MayhonyAHRS;

namespace {

using Vec3 = cv::Vec3f;

// The filter step by step; every product passes through memory, so that none is fused or kept wide.
class LiteralAttitude {
 public:
  float x = 0, y = 0, z = 0, w = 1;

  static bool standstill(const Vec3& motion, float threshold) { return length2(motion) < p(threshold, threshold); }

  void update(const Vec3& g, const Vec3& accel, const Vec3& motion, float dt, float threshold) {
    if (standstill(motion, threshold)) return;
    if (length2(accel) > FLT_EPSILON && first_) {
      const std::array<float, 3> n = normalised<3>({accel[0], accel[1], accel[2]}), r = {0, 0, 1};
      const std::array<float, 4> turn = {p(n[1], r[2]) - p(n[2], r[1]), p(n[2], r[0]) - p(n[0], r[2]),
                                         p(n[0], r[1]) - p(n[1], r[0]),
                                         ((p(n[0], r[0]) + p(n[1], r[1])) + p(n[2], r[2])) + 1.0f};
      if (length2({turn[0], turn[1], turn[2]}) > FLT_EPSILON) set(normalised<4>(turn));
      first_ = false;
    }
    std::array<float, 3> a = normalised<3>({accel[0], accel[1], accel[2]});
    float dw = 0.5f * ((p(-x, g[0]) - p(y, g[1])) - p(z, g[2]));
    float dx = 0.5f * ((p(w, g[0]) + p(y, g[2])) - p(z, g[1]));
    float dy = 0.5f * ((p(w, g[1]) - p(x, g[2])) + p(z, g[0]));
    float dz = 0.5f * ((p(w, g[2]) + p(x, g[1])) - p(y, g[0]));
    if (length2({a[0], a[1], a[2]}) > FLT_EPSILON) {
      a = normalised<3>(a);
      const float xx = p(x, x), yy = p(y, y), zz = p(z, z), ww = p(w, w);
      const float sw = (p(4 * w, xx + yy) + p(2 * y, a[0])) - p(2 * x, a[1]);
      const float sx =
          (((((p(4 * x, zz) - p(2 * z, a[0])) + p(4 * ww, x)) - p(2 * w, a[1])) - 4 * x) + p(8 * x, xx + yy)) +
          p(4 * x, a[2]);
      const float sy =
          (((((p(2 * w, a[0]) + p(4 * ww, y)) + p(4 * y, zz)) - p(2 * z, a[1])) - 4 * y) + p(8 * y, xx + yy)) +
          p(4 * y, a[2]);
      const float sz = ((p(4 * xx, z) - p(2 * x, a[0])) + p(4 * yy, z)) - p(2 * y, a[1]);
      const std::array<float, 4> s = normalised<4>({sx, sy, sz, sw});
      dx = dx - p(0.1f, s[0]);
      dy = dy - p(0.1f, s[1]);
      dz = dz - p(0.1f, s[2]);
      dw = dw - p(0.1f, s[3]);
    }
    set(normalised<4>({x + p(dt, dx), y + p(dt, dy), z + p(dt, dz), w + p(dt, dw)}));
  }

  // (t, s) = (r, 0) q, then the vector part of conj(q) (t, s), for r = (0, 0, 1).
  Vec3 gravity() const {
    const float tx = p(w, 0.0f) - (p(y, 1.0f) - p(z, 0.0f)), ty = p(w, 0.0f) - (p(z, 0.0f) - p(x, 1.0f));
    const float tz = p(w, 1.0f) - (p(x, 0.0f) - p(y, 0.0f)), s = -((p(x, 0.0f) + p(y, 0.0f)) + p(z, 1.0f));
    return {(p(w, tx) - p(s, x)) + (p(ty, z) - p(tz, y)), (p(w, ty) - p(s, y)) + (p(tz, x) - p(tx, z)),
            (p(w, tz) - p(s, z)) + (p(tx, y) - p(ty, x))};
  }

  Vec3 angles() const {
    const float r00 = 1 - 2 * (p(y, y) + p(z, z)), r01 = 2 * (p(x, y) - p(w, z)), r02 = 2 * (p(x, z) + p(w, y));
    const float r10 = 2 * (p(x, y) + p(w, z)), r11 = 1 - 2 * (p(x, x) + p(z, z)), r12 = 2 * (p(y, z) - p(w, x));
    const float r20 = 2 * (p(x, z) - p(w, y)), r21 = 2 * (p(y, z) + p(w, x)), r22 = 1 - 2 * (p(x, x) + p(y, y));
    float t0 = std::atan2(r12, r22), t1;
    const float c2 = std::sqrt(p(r00, r00) + p(r01, r01));
    if (t0 > 0) {
      t0 -= 3.1415927f;
      t1 = std::atan2(-r02, -c2);
    } else {
      t1 = std::atan2(-r02, c2);
    }
    const float s1 = std::sin(t0), c1 = std::cos(t0);
    return {-t0, -t1, -std::atan2(p(s1, r20) - p(c1, r10), p(c1, r11) - p(s1, r21))};
  }

 private:
  static float p(float a, float b) {
    const volatile float product = a * b;
    return product;
  }
  static float length2(const Vec3& v) { return (p(v[0], v[0]) + p(v[1], v[1])) + p(v[2], v[2]); }

  template <std::size_t N>
  static std::array<float, N> normalised(std::array<float, N> v) {
    double sum = 0.0;
    for (const float c : v) sum += static_cast<double>(c) * static_cast<double>(c);
    const volatile double norm = std::sqrt(sum), factor = norm == 0.0 ? 0.0 : 1.0 / norm;
    for (float& c : v) {
      const volatile double product = static_cast<double>(c) * factor;
      c = static_cast<float>(product);
    }
    return v;
  }

  void set(const std::array<float, 4>& q) {
    x = q[0];
    y = q[1];
    z = q[2];
    w = q[3];
  }

  bool first_ = true;
};

template <int N>
bool same(const cv::Vec<float, N>& a, const cv::Vec<float, N>& b) {
  return std::equal(a.val, a.val + N, b.val, sameBits<float>);
}

TEST(MayhonyAHRS, EqualsTheLiteralSteps) {
  for (const bool hostile : {false, true})
    for (const float threshold : {0.0f, 0.04f, 0.8f, -0.8f}) {
      Stream<float> next(71, hostile);
      const auto vector = [&] { return Vec3(next(), next(), next()); };
      MayhonyAHRS filter(100.0f, NAN, threshold);  // gains have no effect
      for (int run = 0; run < 200; ++run) {
        filter.reset();
        LiteralAttitude literal;
        // Gravity as it is, upside down, not there, too weak to align with, and strong.
        const Vec3 firsts[] = {{0, 0, 1}, {0, 0, -1}, {}, {0, 1e-4f, 0}, {0, 30, 0}};
        const bool still = run % 3 == 0;  // the gradient is rounding only
        for (int n = 0; n < 30; ++n) {
          const Vec3 gyro = still ? Vec3() : vector(), motion = n % 6 == 5 ? Vec3(0, threshold, 0) : vector();
          Vec3 accel = still && n > 0 && !hostile ? filter.gravity() : vector() * (run % 5 == 0 ? 1e-4f : 1.0f);
          if (n == 0 && run % 2 == 1) accel = firsts[run / 2 % 5];
          const float dt = run % 7 == 0 ? next() : 0.01f;
          filter.update(gyro, accel, motion, dt);
          literal.update(gyro, accel, motion, dt, threshold);
          ASSERT_EQ(filter.standstill(motion), literal.standstill(motion, threshold)) << run << ", step " << n;
          ASSERT_TRUE(same(filter.value(), {literal.x, literal.y, literal.z, literal.w})) << run << ", step " << n;
          ASSERT_TRUE(same(filter.gravity(), literal.gravity())) << run << ", step " << n;
          ASSERT_TRUE(same(filter.angles(), literal.angles())) << run << ", step " << n;
        }
      }
    }
}

}  // namespace
