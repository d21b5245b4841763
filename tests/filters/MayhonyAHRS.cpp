#include <MirelAlgorithms/filters/MayhonyAHRS.h>
#include <gtest/gtest.h>

#include <Eigen/Geometry>
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

  void update(const Vec3& g, const Vec3& accel, const Vec3& motion, float dt, float threshold) {
    if (length2(motion) < p(threshold, threshold)) return;
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
      for (int run = 0; run < 200; ++run) {
        MayhonyAHRS filter(0.6f, 0.15f, threshold);
        LiteralAttitude literal;
        const bool still = run % 3 == 0;  // the gradient is rounding only
        for (int n = 0; n < 30; ++n) {
          const Vec3 gyro = still ? Vec3() : vector(), motion = vector();
          const Vec3 accel = still && n > 0 && !hostile ? filter.gravity() : vector() * (run % 5 == 0 ? 1e-4f : 1.0f);
          const float dt = run % 7 == 0 ? next() : 0.01f;
          filter.update(gyro, accel, motion, dt);
          literal.update(gyro, accel, motion, dt, threshold);
          ASSERT_TRUE(same(filter.value(), {literal.x, literal.y, literal.z, literal.w})) << run << ", step " << n;
          ASSERT_TRUE(same(filter.gravity(), literal.gravity())) << run << ", step " << n;
          ASSERT_TRUE(same(filter.angles(), literal.angles())) << run << ", step " << n;
        }
      }
    }
}

constexpr float moving = 1.0f;
const Vec3 none, motion(moving, 0, 0);

TEST(MayhonyAHRS, FirstUsableSampleAlignsGravity) {
  const float half = std::sqrt(0.5f);
  const cv::Vec4f identity(0, 0, 0, 1), onX(0, -half, 0, half), onY(half, 0, 0, half);
  struct Row {
    const char* what;
    Vec3 accel;
    cv::Vec4f aligned, afterOneOnX;  // the second sample aligns only where the first was not usable
  };
  for (const Row& row : {Row{"aligned", {0, 0, 1}, identity, identity}, Row{"opposite", {0, 0, -1}, identity, identity},
                         Row{"along x", {1, 0, 0}, onX, onX}, Row{"along y", {0, 30, 0}, onY, onY},
                         Row{"none", none, identity, onX}, Row{"tiny", {0, 1e-4f, 0}, identity, onX}}) {
    MayhonyAHRS filter;
    filter.update(none, row.accel, motion, 0.0f);
    EXPECT_LT(cv::norm(filter.value() - row.aligned), 1e-6) << row.what;
    filter.update(none, {1, 0, 0}, motion, 0.0f);
    EXPECT_LT(cv::norm(filter.value() - row.afterOneOnX), 1e-6) << row.what;
    filter.reset();
    filter.update(none, {0, 1, 0}, motion, 0.0f);
    EXPECT_LT(cv::norm(filter.value() - onY), 1e-6) << row.what;
  }
}

TEST(MayhonyAHRS, StandstillFreezesEverything) {
  MayhonyAHRS filter(0.6f, 0.15f, 0.5f);
  EXPECT_TRUE(filter.standstill({0.49f, 0, 0}));
  EXPECT_FALSE(filter.standstill({0, 0.5f, 0}));
  EXPECT_FALSE(filter.standstill({NAN, 0, 0}));
  filter.update({1, 2, 3}, {1, 0, 0}, {0.49f, 0, 0}, 1.0f);
  EXPECT_EQ(filter.value(), cv::Vec4f(0, 0, 0, 1));
  filter.update(none, {1, 0, 0}, {0, 0.5f, 0}, 0.0f);  // still to be aligned, and moving
  EXPECT_LT(filter.value()[1], -0.7f);
}

TEST(MayhonyAHRS, GyroscopeAloneTurnsByRateTimesTime) {
  MayhonyAHRS filter;
  for (int n = 0; n < 1000; ++n) filter.update({0.5f, 0, 0}, none, motion, 1e-3f);
  EXPECT_NEAR(filter.angles()[0], 0.5f, 1e-3f);
  EXPECT_NEAR(filter.gravity()[1], std::sin(0.5f), 1e-3f);
}

TEST(MayhonyAHRS, SettlesOnTheMeasuredGravity) {
  const Vec3 gravity(0.48f, -0.6f, 0.64f);
  MayhonyAHRS filter;
  filter.update(none, {0, 0, 1}, motion, 0.0f);
  for (int n = 0; n < 4000; ++n) filter.update(none, 9.81f * gravity, motion, 0.01f);
  EXPECT_LT(cv::norm(filter.gravity() - gravity), 5e-3);  // steps of fixed length go on around the minimum
}

TEST(MayhonyAHRS, GainsHaveNoEffectCopiesAreWholeAndResetHeals) {
  Stream<float> next(72, false);
  const auto vector = [&] { return Vec3(next(), next(), next()); };
  MayhonyAHRS filter, other(100.0f, NAN), broken;
  broken.update({NAN, 0, 0}, vector(), motion, 0.01f);
  EXPECT_TRUE(std::isnan(broken.value()[0]));
  broken.update(none, {0, 0, 1}, motion, 0.01f);
  EXPECT_TRUE(std::isnan(broken.value()[0]));
  broken.reset();
  for (int n = 0; n < 50; ++n) {
    const Vec3 gyro = vector(), accel = vector();
    for (MayhonyAHRS* each : {&filter, &other, &broken}) each->update(gyro, accel, motion, 0.01f);
    EXPECT_EQ(other.value(), filter.value());
    EXPECT_EQ(broken.value(), filter.value());
  }
  const MayhonyAHRS copy(filter);
  EXPECT_EQ(copy.value(), filter.value());
  EXPECT_EQ(copy.standstill({0.03f, 0, 0}), filter.standstill({0.03f, 0, 0}));
}

TEST(MayhonyAHRS, AnglesAreThoseOfEigen) {
  Stream<float> next(73, false);
  MayhonyAHRS filter;
  for (int n = 0; n < 2000; ++n) {
    filter.update({next(), next(), next()}, none, motion, 0.5f);
    const Eigen::Quaternionf q(filter.value()[3], filter.value()[0], filter.value()[1], filter.value()[2]);
    const Eigen::Vector3f expected = q.toRotationMatrix().eulerAngles(0, 1, 2);
    const Vec3 found = filter.angles();
    ASSERT_GE(found[0], 0.0f);
    const Eigen::Matrix3f turned =
        (Eigen::AngleAxisf(found[0], Eigen::Vector3f::UnitX()) * Eigen::AngleAxisf(found[1], Eigen::Vector3f::UnitY()) *
         Eigen::AngleAxisf(found[2], Eigen::Vector3f::UnitZ()))
            .toRotationMatrix();
    ASSERT_LT((turned - q.toRotationMatrix()).norm(), 1e-5f) << n;
    if (std::abs(std::abs(found[1]) - 1.5707964f) < 0.05f) continue;  // the other two are hardly determined
    for (int i = 0; i < 3; ++i) ASSERT_LT(std::abs(std::remainder(found[i] - expected[i], 6.2831853f)), 1e-4f) << n;
  }
}

}  // namespace
