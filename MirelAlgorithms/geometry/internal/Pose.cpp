#include <MirelAlgorithms/geometry/internal/Pose.h>

#include <cmath>
#include <utility>

namespace MirelAlgorithms {
namespace {

constexpr int at(int row, int column) { return 4 * column + row; }

void swapRows(Mat4d& m, int a, int b) {
  for (int column = 0; column < 4; ++column) std::swap(m[at(a, column)], m[at(b, column)]);
}

void scaleRow(Mat4d& m, int row, double divisor) {
  for (int column = 0; column < 4; ++column) m[at(row, column)] /= divisor;
}

void subtractRow(Mat4d& m, int row, double factor, int from) {
  for (int column = 0; column < 4; ++column) m[at(row, column)] -= factor * m[at(from, column)];
}

int largestBelow(const Mat4d& m, int column) {
  int best = column;
  for (int row = column + 1; row < 4; ++row)
    if (std::abs(m[at(row, column)]) > std::abs(m[at(best, column)])) best = row;
  return best;
}

}  // namespace

Mat4d multiply(const Mat4d& a, const Mat4d& b) {
  Mat4d product;
  for (int column = 0; column < 4; ++column)
    for (int row = 0; row < 4; ++row) {
      double sum = 0.0;
      for (int k = 0; k < 4; ++k) sum += a[at(row, k)] * b[at(k, column)];
      product[at(row, column)] = sum;
    }
  return product;
}

Mat4d rigidInverse(const Mat4d& pose) {
  Mat4d inverse;
  for (int row = 0; row < 3; ++row) {
    double sum = 0.0;
    for (int k = 0; k < 3; ++k) {
      inverse[at(row, k)] = pose[at(k, row)];
      sum += pose[at(k, row)] * pose[at(k, 3)];
    }
    inverse[at(row, 3)] = -sum;
  }
  return inverse;
}

std::optional<Mat4d> generalInverse(const Mat4d& pose) {
  constexpr double leastPivot = 1e-15;
  Mat4d rest = pose, inverse;
  for (int step = 0; step < 4; ++step) {
    const int row = largestBelow(rest, step);
    const double pivot = rest[at(row, step)];
    if (!(std::abs(pivot) > leastPivot)) return std::nullopt;
    swapRows(rest, step, row);
    swapRows(inverse, step, row);
    scaleRow(rest, step, pivot);
    scaleRow(inverse, step, pivot);
    for (int other = 0; other < 4; ++other) {
      if (other == step) continue;
      const double factor = rest[at(other, step)];
      subtractRow(rest, other, factor, step);
      subtractRow(inverse, other, factor, step);
    }
  }
  return inverse;
}

}  // namespace MirelAlgorithms
