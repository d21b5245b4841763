/// Overdetermined linear systems A x = b, plain or robust against outlier rows.
///
///     Lsq solver;
///     std::vector<double> x(cols);
///     if (solver.lsq(a, b, x.data(), rows, cols, 1, 3.5, 0.0) == 0)
///       ...  // x minimises the weighted residuals, solver.outlier() lists the rows left out
#pragma once

#include <MirelAlgorithms/Export.h>

#include <cstdint>
#include <limits>
#include <vector>

namespace MirelAlgorithms {

/// Least-squares solver; keeps the figures of its last robust solve.
///
/// Plain: minimises |A x - b| by Householder QR with column pivoting. Where A has not full rank, the basic solution:
/// unknowns beyond the rank are 0.
///
/// Robust: iteratively reweighted least squares with Tukey's biweight (Beaton and Tukey, "The fitting of power series,
/// meaning polynomials, illustrated on band-spectroscopic data", Technometrics 16, 1974), at most ten solves. The first
/// has all weights 1. After each one, with r = A x - b of the given system and w the weights that led to x,
///
///     figure = sqrt(sum of (w_i * r_i)^2) / rows
///
/// is taken over the system that was solved. A solution is accepted while the figure falls; the first that does not
/// lower it, or whose figure is not a number, ends the iteration and is dropped. So does a figure at or below 2.2e-16
/// (an exact fit, accepted), and so do weights that leave fewer than `cols` rows (the system is not solved again). New
/// weights come from `lsqWeights`; they multiply whole rows of A and b.
///
/// One object per thread; objects share nothing.
class MIREL_API Lsq {
 public:
  Lsq() = default;
  Lsq(const Lsq&) = default;
  Lsq& operator=(const Lsq&) = default;
  virtual ~Lsq();

  /// Solves a system.
  ///
  /// @param a          rows x cols numbers, row by row
  /// @param b          rows numbers
  /// @param x          cols numbers: receives the solution; may be part of `a` or `b`
  /// @param rows       number of equations, at least cols
  /// @param cols       number of unknowns, at least 1
  /// @param mode       0 plain, 1 robust
  /// @param threshold  robust: residuals of this many times the mean absolute residual weigh nothing; at least 1.0
  ///                   (not a number: the plain solution)
  /// @param minScale   robust: least value of the mean absolute residual in that product, in the unit of b
  /// @return           0; 27 for a null pointer, sizes or a threshold out of range or another mode, with x and the
  ///                   figures of the last robust solve as they were
  ///
  /// x stays as it was when there is no finite solution, because A or b have values that are not finite or so large
  /// that squares overflow. Time rows * cols^2 per solve, memory rows * cols; throws std::bad_alloc when there is none.
  int lsq(const double* a, const double* b, double* x, int rows, int cols, unsigned int mode, double threshold,
          double minScale);

  /// Tukey's biweight with a scale out of the data:
  ///
  ///     c   = threshold * max(mean |r_i|, minScale)
  ///     w_i = max(0, 1 - r_i^2 / c^2)^2,  then divided by the mean weight
  ///
  /// All weights are 1 when c is at or below 2.2e-16. When every |r_i| is at or above c, all weights are 0 and their
  /// division by their mean gives NaN; so does a residual that is not a number.
  ///
  /// @param residuals  n numbers
  /// @param weights    receives n numbers; may be `residuals`
  /// @param n          how many, at least 1
  /// @param threshold  residuals of this many times the mean absolute residual weigh nothing
  /// @param minScale   least value of the mean absolute residual in that product, in the unit of the residuals
  /// @return           0; 27 for a null pointer or n below 1
  ///
  /// Any number of threads.
  static int lsqWeights(const double* residuals, double* weights, int n, double threshold, double minScale);

  /// Rows of weight 0 in the accepted solution of the last robust solve, ascending.
  const std::vector<std::int32_t>& outlier() const { return outlierRows_; }

  /// Number of these rows.
  std::int32_t outliers() const { return outlierCount_; }

  /// Figure of that solution, in the unit of b: the root of the sum of squares over the number of rows, not the root
  /// of the mean square. 0 before the first robust solve, the largest double after one that accepted nothing.
  double rms() const { return rmsValue_; }

 private:
  static int lsqCore(const double* a, const double* b, double* x, int rows, int cols);
  int lsqRobust(const double* a, const double* b, double* x, int rows, int cols, double threshold, double minScale);

  double rmsValue_ = 0.0;
  double tolerance_ = std::numeric_limits<double>::epsilon();
  std::int32_t maxIterations_ = 10;
  std::int32_t outlierCount_ = 0;
  std::vector<std::int32_t> outlierRows_;
};

}  // namespace MirelAlgorithms
