/// 3-vector of any number type, usable as a key of hash maps.
#pragma once

#include <cstddef>
#include <functional>

namespace VoskBase {

template <class T>
struct Vec3d {
  T x{};
  T y{};
  T z{};

  Vec3d() = default;
  Vec3d(T x_, T y_, T z_) : x(x_), y(y_), z(z_) {}

  friend bool operator==(const Vec3d&, const Vec3d&) = default;
};

}  // namespace VoskBase

template <class T>
struct std::hash<VoskBase::Vec3d<T>> {
  std::size_t operator()(const VoskBase::Vec3d<T>& v) const noexcept {
    // Each step spreads the bits of one component over the whole word (boost::hash_combine's constant and shifts).
    std::size_t seed = 0;
    for (const T& component : {v.x, v.y, v.z})
      seed ^= std::hash<T>()(component) + std::size_t{0x9e3779b9} + (seed << 6) + (seed >> 2);
    return seed;
  }
};
