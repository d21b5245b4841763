#include <MirelAlgorithms/matching/internal/PivotedQr.h>

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

namespace MirelAlgorithms {
namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();
constexpr double lostDigits = 0x1p-26;  // square root of epsilon
constexpr std::size_t cacheLine = 8;    // doubles; keeps columns of a power of two apart in the cache

}  // namespace

PivotedQr::PivotedQr(const double* a, std::size_t rows, std::size_t cols)
    : rows_(static_cast<Index>(rows)),
      cols_(static_cast<Index>(cols)),
      stride_(static_cast<Index>(rows + cacheLine)),
      buffer_(std::make_unique_for_overwrite<double[]>((2 * cols + 2) * (rows + cacheLine))),
      matrix_(buffer_.get()),
      reduced_(matrix_ + cols_ * stride_),
      rightHandSide_(reduced_ + cols_ * stride_),
      zeros_(rightHandSide_ + stride_),
      order_(cols),
      unknown_(cols),
      norm_(cols_),
      measuredNorm_(cols_),
      factor_(cols),
      pass_(columnPasses()) {
  for (Index i = 0; i < rows_; ++i)
    for (Index j = 0; j < cols_; ++j) matrix_[j * stride_ + i] = a[i * cols_ + j];
  std::fill_n(zeros_, rows_, 0.0);
}

ResidualSums PivotedQr::residuals(const double* x, const double* b, const double* weights, double* residuals) const {
  return pass_.residuals(matrix_, stride_, x, cols_, b, weights, residuals, rows_);
}

void PivotedQr::solve(const double* b, const double* weights, double* x) {
  start(b, weights);
  Index rank = 0;
  for (; rank < cols_ && choosePivot(rank); ++rank) {
    finishRow(rank);
    reflect(rank);
    downdateNorms(rank);
  }
  substituteBack(rank, x);
}

void PivotedQr::start(const double* b, const double* weights) {
  pass_.weigh(reduced_, matrix_, stride_, cols_, weights, norm_.data(), rows_);
  for (Index i = 0; i < rows_; ++i) rightHandSide_[i] = b[i] * weights[i];
  for (Index j = 0; j < cols_; ++j) {
    order_[j] = reduced_ + j * stride_;
    unknown_[j] = j;
    measuredNorm_[j] = norm_[j] = std::sqrt(norm_[j]);
    factor_[j] = 0.0;
  }
  rightHandSideFactor_ = 0.0;
  pending_ = {zeros_, 0.0};
  const double smallest = norm_.maxCoeff() * epsilon;
  smallestPivot_ = smallest * smallest / static_cast<double>(rows_);
}

/// Brings the longest remaining column to place k. False: what remains is as good as zero.
bool PivotedQr::choosePivot(Index k) {
  Index longest;
  const double norm = norm_.tail(cols_ - k).maxCoeff(&longest);
  if (norm * norm < smallestPivot_ * static_cast<double>(rows_ - k)) return false;
  longest += k;
  std::swap(order_[k], order_[longest]);
  std::swap(unknown_[k], unknown_[longest]);
  std::swap(norm_[k], norm_[longest]);
  std::swap(measuredNorm_[k], measuredNorm_[longest]);
  std::swap(factor_[k], factor_[longest]);
  return true;
}

/// Row k as the reflectors before k leave it.
void PivotedQr::finishRow(Index k) {
  const double change = pending_.tau * pending_.v[k];
  for (Index j = k; j < cols_; ++j) order_[j][k] -= factor_[j] * change;
  rightHandSide_[k] -= rightHandSideFactor_ * change;
}

/// The reflector that takes the pivot column to a multiple of the k-th unit vector. Row k changes, the others pend.
void PivotedQr::reflect(Index k) {
  const Index below = k + 1, rows = rows_ - below;
  double* pivot = order_[k] + below;
  const double tailSquared = pass_.remainingSquares(pivot, factor_[k], pendingFrom(below), rows);
  if (tailSquared <= (std::numeric_limits<double>::min)()) return;  // is one already
  const double head = order_[k][k];
  double length = std::sqrt(head * head + tailSquared);
  if (head >= 0.0) length = -length;
  const double tau = (length - head) / length;
  order_[k][k] = length;

  rightHandSideFactor_ =
      pass_.reflect(pivot, factor_[k], head - length, rightHandSide_ + below, rightHandSideFactor_,
                    order_.data() + below, below, cols_ - below, factor_.data() + below, pendingFrom(below), rows) +
      rightHandSide_[k];
  rightHandSide_[k] -= tau * rightHandSideFactor_;
  for (Index j = below; j < cols_; ++j) {
    factor_[j] += order_[j][k];
    order_[j][k] -= tau * factor_[j];
  }
  pending_ = {order_[k], tau};
}

/// Norms of what is left below row k, summed up anew where the downdated one has lost its digits.
void PivotedQr::downdateNorms(Index k) {
  const Index below = k + 1;
  for (Index j = below; j < cols_; ++j) {
    if (norm_[j] == 0.0) continue;
    const double share = std::abs(order_[j][k]) / norm_[j];
    double left = (1.0 + share) * (1.0 - share);
    left = left < 0.0 ? 0.0 : left;
    const double shrunk = norm_[j] / measuredNorm_[j];
    if (left * (shrunk * shrunk) <= lostDigits) {
      norm_[j] = std::sqrt(pass_.remainingSquares(order_[j] + below, factor_[j], pendingFrom(below), rows_ - below));
      measuredNorm_[j] = norm_[j];
    } else {
      norm_[j] *= std::sqrt(left);
    }
  }
}

void PivotedQr::substituteBack(Index rank, double* x) {
  Eigen::MatrixXd triangle(rank, rank);
  for (Index j = 0; j < rank; ++j) std::copy_n(order_[j], j + 1, triangle.col(j).data());
  Eigen::Map<Eigen::VectorXd> solution(rightHandSide_, rank);
  triangle.triangularView<Eigen::Upper>().solveInPlace(solution);
  std::fill_n(x, cols_, 0.0);
  for (Index j = 0; j < rank; ++j) x[unknown_[j]] = solution[j];
}

}  // namespace MirelAlgorithms
