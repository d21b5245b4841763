/// The passes over long columns that reweighted least squares by Householder QR decompositions are made of.
///
/// A reflector I - tau * (1, v)(1, v)^T changes the rows below its own in every other column by -= factor * (tau * v),
/// where factor is the product of (1, v) with the column. The subtraction is put off until the column is read for the
/// next reflector, so that each step goes over each column once.
///
/// Sums run in a fixed order, whatever the instruction set: products with several columns in two lanes (even and odd
/// rows, then their sum, then a last single row), all others in four (lanes 0 + 2 and 1 + 3, a last pair of rows, their
/// sum, a last single row). It is the order of Eigen 3.4 with packets of two, so results equal Eigen's bit for bit.
#pragma once

#include <cstddef>

namespace MirelAlgorithms {

/// A reflector that the columns do not show yet: each still has to change by -= factor * (tau * v).
struct PendingReflector {
  const double* v;
  double tau;
};

struct ResidualSums {
  double absolute = 0.0;         ///< sum of |residual|
  double weightedSquares = 0.0;  ///< sum of (weight * residual)^2
};

struct ColumnPasses {
  using Index = std::ptrdiff_t;

  /// Of each column: column = source * weights; squares = the sum of its squares. Columns lie `stride` apart.
  void (*weigh)(double* columns, const double* sources, Index stride, Index count, const double* weights,
                double* squares, Index rows);

  /// The sum of squares that a column will have.
  double (*remainingSquares)(const double* column, double factor, PendingReflector pending, Index rows);

  /// pivot = what it will be / divisor, the v of the next reflector. Brings the other columns up to date: one for
  /// itself, whose product with v is returned, and `count` from `firstRow` on, whose factors their products with v
  /// replace.
  double (*reflect)(double* pivot, double factor, double divisor, double* other, double otherFactor,
                    double* const* columns, Index firstRow, Index count, double* factors, PendingReflector pending,
                    Index rows);

  /// residuals = sum of x[j] * column j, minus b; all sums in ascending order.
  ResidualSums (*residuals)(const double* columns, Index stride, const double* x, Index count, const double* b,
                            const double* weights, double* residuals, Index rows);

  /// weights = max(0, 1 - residuals^2 / c^2)^2, then divided by their mean; the sum in ascending order. Both may be the
  /// same memory.
  void (*biweights)(const double* residuals, double c, double* weights, Index rows);
};

/// The passes for the instruction set in force.
const ColumnPasses& columnPasses() noexcept;

const ColumnPasses& columnPassesBaseline() noexcept;
const ColumnPasses& columnPassesAvx2() noexcept;

}  // namespace MirelAlgorithms
