/// Least squares by Householder QR decomposition with column pivoting.
#pragma once

#include <MirelAlgorithms/matching/internal/ColumnPasses.h>

#include <Eigen/Core>
#include <memory>
#include <vector>

namespace MirelAlgorithms {

/// Minimises |W (A x - b)| for a dense A with at least as many rows as columns and a diagonal W (Businger and Golub,
/// "Linear least squares solutions by Householder transformations", 1965; norms downdated as in LAPACK working note
/// 176).
///
/// The steps, their thresholds and the order of all sums are those of Eigen 3.4's ColPivHouseholderQR on a dynamic
/// column-major matrix of doubles with packets of two, so x has the same bits; but each step goes once over the
/// remaining columns instead of twice, and takes the right-hand side along. Unknowns beyond the rank are 0.
class PivotedQr {
 public:
  /// @param a  rows x cols numbers, row by row; copied
  PivotedQr(const double* a, std::size_t rows, std::size_t cols);

  /// @param b        rows numbers
  /// @param weights  rows numbers, the diagonal of W
  /// @param x        receives cols numbers
  void solve(const double* b, const double* weights, double* x);

  /// Writes A x - b, without weights; the sums are those of the weighted system.
  ResidualSums residuals(const double* x, const double* b, const double* weights, double* residuals) const;

 private:
  using Index = std::ptrdiff_t;

  void start(const double* b, const double* weights);
  bool choosePivot(Index k);
  void finishRow(Index k);
  void reflect(Index k);
  void downdateNorms(Index k);
  void substituteBack(Index rank, double* x);
  PendingReflector pendingFrom(Index row) const { return {pending_.v + row, pending_.tau}; }

  Index rows_, cols_, stride_;
  std::unique_ptr<double[]> buffer_;  // holds the columns that the next four point to, `stride_` apart
  double* matrix_;                    // A
  double* reduced_;                   // W A, on its way to R
  double* rightHandSide_;
  double* zeros_;
  std::vector<double*> order_;           // columns in pivoting order
  std::vector<Index> unknown_;           // which unknown each of them belongs to
  Eigen::VectorXd norm_, measuredNorm_;  // of what is left of each: downdated, and as last summed up
  PendingReflector pending_;
  std::vector<double> factor_;  // of the pending reflector, by column
  double rightHandSideFactor_;
  double smallestPivot_;  // bound on the squared norm per remaining row
  const ColumnPasses& pass_;
};

}  // namespace MirelAlgorithms
