/// Poses and numbers for tests of views.
#pragma once

#include <VoskBase/Mat4d.h>

#include <Eigen/Geometry>
#include <random>

class RandomPoses {
 public:
  explicit RandomPoses(unsigned seed) : random_(seed) {}

  double uniform(double least, double most) { return std::uniform_real_distribution<double>(least, most)(random_); }
  double normal() { return normal_(random_); }
  int below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }

  /// Any rotation, positions of this spread.
  Eigen::Isometry3d pose(double extent) {
    Eigen::Quaterniond rotation(normal(), normal(), normal(), normal());
    return Eigen::Translation3d(extent * normal(), extent * normal(), extent * normal()) * rotation.normalized();
  }

 private:
  std::mt19937 random_;
  std::normal_distribution<double> normal_;
};

inline VoskBase::Mat4d toMat4d(const Eigen::Matrix4d& matrix) {
  VoskBase::Mat4d m;
  for (int i = 0; i < 16; ++i) m[i] = matrix(i % 4, i / 4);
  return m;
}
