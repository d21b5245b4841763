/// Arithmetic of poses: 4 x 4 matrices whose storage order m0 to m15 is column by column.
#pragma once

#include <MirelAlgorithms/Host.h>

#include <optional>

namespace MirelAlgorithms {

/// Product of two poses: first b, then a.
Mat4d multiply(const Mat4d& a, const Mat4d& b);

/// Inverse of a pose that is a rotation and a translation.
Mat4d rigidInverse(const Mat4d& pose);

/// Inverse by Gauss-Jordan elimination; none when a pivot is not larger than 1e-15.
std::optional<Mat4d> generalInverse(const Mat4d& pose);

}  // namespace MirelAlgorithms
