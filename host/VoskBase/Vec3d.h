/// 3-vector of any number type, usable as a key of hash maps.
#pragma once

#include <cstddef>
#include <functional>

namespace VoskBase {

/// A point or a direction in space, or the key of a voxel.
///
/// @tparam T  number type of the components
template <class T>
struct Vec3d {
  T x{};  ///< first component
  T y{};  ///< second component
  T z{};  ///< third component

  /// (0, 0, 0).
  Vec3d() = default;

  /// From its components.
  Vec3d(T x_, T y_, T z_) : x(x_), y(y_), z(z_) {}

  friend bool operator==(const Vec3d&, const Vec3d&) = default;
};

}  // namespace VoskBase

/// Hash of the three components.
template <class T>
struct std::hash<VoskBase::Vec3d<T>> {
  /// Equal for equal vectors.
  std::size_t operator()(const VoskBase::Vec3d<T>& v) const noexcept {
    // Each step spreads the bits of one component over the whole word (boost::hash_combine's constant and shifts).
    std::size_t seed = 0;
    for (const T& component : {v.x, v.y, v.z})
      seed ^= std::hash<T>()(component) + std::size_t{0x9e3779b9} + (seed << 6) + (seed >> 2);
    return seed;
  }
};
