#include <MirelAlgorithms/filters/MayhonyAHRS.h>

#include <cmath>
#include <limits>

// The grouping of every expression fixes its bits: next to an aligned attitude the gradient is nothing but rounding,
// and is still stretched to unit length.

namespace MirelAlgorithms {
namespace {

constexpr float epsilon = std::numeric_limits<float>::epsilon();
constexpr float gain = 0.1f;  // of the step down the gradient

// Plain numbers stay in registers; elements of cv::Vec take the way through memory, which the next step then waits for.
struct Vector {
  float x, y, z;
};
struct Quaternion {
  float x, y, z, w;
};

Vector vector(const cv::Vec3f& v) { return {v[0], v[1], v[2]}; }

float dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

float squaredLength(const Vector& v) { return dot(v, v); }

Vector cross(const Vector& a, const Vector& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

double reciprocalLength(double squares) {
  const double length = std::sqrt(squares);
  return length == 0.0 ? 0.0 : 1.0 / length;
}

// Length and products in double precision; zero stays zero.
Vector normalised(const Vector& v) {
  const double x = v.x, y = v.y, z = v.z, factor = reciprocalLength(x * x + y * y + z * z);
  return {static_cast<float>(x * factor), static_cast<float>(y * factor), static_cast<float>(z * factor)};
}

Quaternion normalised(const Quaternion& q) {
  const double x = q.x, y = q.y, z = q.z, w = q.w, factor = reciprocalLength(x * x + y * y + z * z + w * w);
  return {static_cast<float>(x * factor), static_cast<float>(y * factor), static_cast<float>(z * factor),
          static_cast<float>(w * factor)};
}

// Element by element: a whole cv::Vec4f would be put together in memory first.
void store(const Quaternion& q, cv::Vec4f& target) {
  target[0] = q.x;
  target[1] = q.y;
  target[2] = q.z;
  target[3] = q.w;
}

// q + t r
Quaternion moved(const Quaternion& q, float t, const Quaternion& r) {
  return {q.x + t * r.x, q.y + t * r.y, q.z + t * r.z, q.w + t * r.w};
}

// Rate of change of the attitude while turning at `g`, half the product of both.
Quaternion rateOfTurn(const Quaternion& q, const Vector& g) {
  return {0.5f * (q.w * g.x + q.y * g.z - q.z * g.y), 0.5f * (q.w * g.y - q.x * g.z + q.z * g.x),
          0.5f * (q.w * g.z + q.x * g.y - q.y * g.x), 0.5f * (-q.x * g.x - q.y * g.y - q.z * g.z)};
}

// Gradient of the squared difference between gravity as the attitude has it and as it was measured.
Quaternion gravityGradient(const Quaternion& q, const Vector& a) {
  const auto [x, y, z, w] = q;
  const float xx = x * x, yy = y * y, zz = z * z, ww = w * w;
  return {4 * x * zz - 2 * z * a.x + 4 * ww * x - 2 * w * a.y - 4 * x + 8 * x * (xx + yy) + 4 * x * a.z,
          2 * w * a.x + 4 * ww * y + 4 * y * zz - 2 * z * a.y - 4 * y + 8 * y * (xx + yy) + 4 * y * a.z,
          4 * xx * z - 2 * x * a.x + 4 * yy * z - 2 * y * a.y, 4 * w * (xx + yy) + 2 * y * a.x - 2 * x * a.y};
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
  const Vector n = normalised(vector(accel)), r = vector(reference_), v = cross(n, r);
  if (squaredLength(v) > epsilon) store(normalised(Quaternion{v.x, v.y, v.z, dot(n, r) + 1.0f}), quaternion_);
  firstUpdate_ = false;
}

void MayhonyAHRS::update(const cv::Vec3f& gyro, const cv::Vec3f& accel, const cv::Vec3f& motion, float dt) {
  if (standstill(motion)) return;
  if (squaredLength(vector(accel)) > epsilon && firstUpdate_) align(accel);

  const Quaternion q{quaternion_[0], quaternion_[1], quaternion_[2], quaternion_[3]};
  const Vector a = normalised(vector(accel));
  Quaternion rate = rateOfTurn(q, vector(gyro));
  if (squaredLength(a) > epsilon) rate = moved(rate, -gain, normalised(gravityGradient(q, normalised(a))));
  store(normalised(moved(q, dt, rate)), quaternion_);
}

// The vector part of conj(q) (r, 0) q.
cv::Vec3f MayhonyAHRS::gravity() const {
  const Vector v{quaternion_[0], quaternion_[1], quaternion_[2]}, r = vector(reference_), turned = cross(v, r);
  const float w = quaternion_[3], ts = -dot(v, r);
  const Vector t{w * r.x - turned.x, w * r.y - turned.y, w * r.z - turned.z}, tv = cross(t, v);
  return {w * t.x - ts * v.x + tv.x, w * t.y - ts * v.y + tv.y, w * t.z - ts * v.z + tv.z};
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
  return standstillThreshold_ * standstillThreshold_ > squaredLength(vector(motion));
}

}  // namespace MirelAlgorithms
