/// 4 x 4 matrix of doubles; as a pose it takes camera coordinates to world coordinates.
#pragma once

#include <array>

namespace VoskBase {

/// Sixteen elements in storage order m0 to m15, the identity by default. For a rigid pose (m0, m1, m2), (m4, m5, m6)
/// and (m8, m9, m10) are the camera's x, y and z axes in world coordinates, (m12, m13, m14) its position.
class Mat4d {
 public:
  /// The identity.
  Mat4d() = default;

  /// Element i in storage order, 0 to 15; not checked. @{
  double& operator[](int i) { return m_[static_cast<std::size_t>(i)]; }
  const double& operator[](int i) const { return m_[static_cast<std::size_t>(i)]; }
  /// @}

 private:
  std::array<double, 16> m_{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
};

}  // namespace VoskBase
