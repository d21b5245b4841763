#include <MirelAlgorithms/filters/MayhonyAHRS.h>

#include <cmath>
#include <limits>

// The grouping of every expression fixes its bits: next to an aligned attitude the gradient is nothing but rounding,
// and is still stretched to unit length.

namespace MirelAlgorithms {
namespace {

constexpr float epsilon = std::numeric_limits<float>::epsilon();

float squaredLength(const cv::Vec3f& v) { return v[0] * v[0] + v[1] * v[1] + v[2] * v[2]; }

float dot(const cv::Vec3f& a, const cv::Vec3f& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

cv::Vec3f cross(const cv::Vec3f& a, const cv::Vec3f& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

// Length and products in double precision; zero stays zero.
template <int N>
cv::Vec<float, N> normalised(const cv::Vec<float, N>& v) {
  double sum = 0.0;
  for (int i = 0; i < N; ++i) sum += static_cast<double>(v[i]) * v[i];
  const double norm = std::sqrt(sum), factor = norm == 0.0 ? 0.0 : 1.0 / norm;
  cv::Vec<float, N> result;
  for (int i = 0; i < N; ++i) result[i] = static_cast<float>(v[i] * factor);
  return result;
}

// Rate of change of the attitude while turning at `g`, half the product of both.
cv::Vec4f rateOfTurn(const cv::Vec4f& q, const cv::Vec3f& g) {
  const float x = q[0], y = q[1], z = q[2], w = q[3];
  return {0.5f * (w * g[0] + y * g[2] - z * g[1]), 0.5f * (w * g[1] - x * g[2] + z * g[0]),
          0.5f * (w * g[2] + x * g[1] - y * g[0]), 0.5f * (-x * g[0] - y * g[1] - z * g[2])};
}

// Gradient of the squared difference between gravity as the attitude has it and as it was measured.
cv::Vec4f gravityGradient(const cv::Vec4f& q, const cv::Vec3f& a) {
  const float x = q[0], y = q[1], z = q[2], w = q[3];
  const float xx = x * x, yy = y * y, zz = z * z, ww = w * w;
  return {4 * x * zz - 2 * z * a[0] + 4 * ww * x - 2 * w * a[1] - 4 * x + 8 * x * (xx + yy) + 4 * x * a[2],
          2 * w * a[0] + 4 * ww * y + 4 * y * zz - 2 * z * a[1] - 4 * y + 8 * y * (xx + yy) + 4 * y * a[2],
          4 * xx * z - 2 * x * a[0] + 4 * yy * z - 2 * y * a[1], 4 * w * (xx + yy) + 2 * y * a[0] - 2 * x * a[1]};
}

}  // namespace

MayhonyAHRS::MayhonyAHRS(float kp, float ki, float standstillThreshold)
    : standstillThreshold_(standstillThreshold), twoKp_(2.0f * kp), twoKi_(2.0f * ki), reference_(0.0f, 0.0f, 1.0f) {
  MayhonyAHRS::reset();
}

MayhonyAHRS::~MayhonyAHRS() { MayhonyAHRS::reset(); }

void MayhonyAHRS::reset() {
  quaternion_ = {0.0f, 0.0f, 0.0f, 1.0f};
  integralError_ = {0.0f, 0.0f, 0.0f};
  firstUpdate_ = true;
}

void MayhonyAHRS::align(const cv::Vec3f& accel) {
  const cv::Vec3f n = normalised(accel), v = cross(n, reference_);
  const float w = dot(n, reference_) + 1.0f;
  if (squaredLength(v) > epsilon) quaternion_ = normalised(cv::Vec4f(v[0], v[1], v[2], w));
  firstUpdate_ = false;
}

void MayhonyAHRS::update(const cv::Vec3f& gyro, const cv::Vec3f& accel, const cv::Vec3f& motion, float dt) {
  if (standstill(motion)) return;
  if (squaredLength(accel) > epsilon && firstUpdate_) align(accel);

  const cv::Vec3f a = normalised(accel);
  cv::Vec4f rate = rateOfTurn(quaternion_, gyro);
  if (squaredLength(a) > epsilon) {
    constexpr float gain = 0.1f;
    const cv::Vec4f s = normalised(gravityGradient(quaternion_, normalised(a)));
    for (int i = 0; i < 4; ++i) rate[i] = rate[i] - gain * s[i];
  }
  for (int i = 0; i < 4; ++i) quaternion_[i] = quaternion_[i] + dt * rate[i];
  quaternion_ = normalised(quaternion_);
}

// The vector part of conj(q) (r, 0) q.
cv::Vec3f MayhonyAHRS::gravity() const {
  const cv::Vec3f v(quaternion_[0], quaternion_[1], quaternion_[2]);
  const float w = quaternion_[3];
  const cv::Vec3f turned = cross(v, reference_);
  cv::Vec3f t;
  for (int i = 0; i < 3; ++i) t[i] = w * reference_[i] - turned[i];
  const float ts = -dot(v, reference_);
  const cv::Vec3f tv = cross(t, v);
  return {w * t[0] - ts * v[0] + tv[0], w * t[1] - ts * v[1] + tv[1], w * t[2] - ts * v[2] + tv[2]};
}

// Of the two sets of angles that make a rotation, the one whose first angle is in [0, pi].
cv::Vec3f MayhonyAHRS::angles() const {
  constexpr float pi = 3.1415927f;
  const float x = quaternion_[0], y = quaternion_[1], z = quaternion_[2], w = quaternion_[3];
  const float r00 = 1 - 2 * (y * y + z * z), r01 = 2 * (x * y - w * z), r02 = 2 * (x * z + w * y);
  const float r10 = 2 * (x * y + w * z), r11 = 1 - 2 * (x * x + z * z), r12 = 2 * (y * z - w * x);
  const float r20 = 2 * (x * z - w * y), r21 = 2 * (y * z + w * x), r22 = 1 - 2 * (x * x + y * y);

  float t0 = std::atan2(r12, r22), c2 = std::sqrt(r00 * r00 + r01 * r01);
  if (t0 > 0) {
    t0 = t0 - pi;
    c2 = -c2;
  }
  const float t1 = std::atan2(-r02, c2);
  const float s1 = std::sin(t0), c1 = std::cos(t0);
  const float t2 = std::atan2(s1 * r20 - c1 * r10, c1 * r11 - s1 * r21);
  return {-t0, -t1, -t2};
}

bool MayhonyAHRS::standstill(const cv::Vec3f& motion) const {
  return standstillThreshold_ * standstillThreshold_ > squaredLength(motion);
}

}  // namespace MirelAlgorithms
