/// Least squares step by step on whole matrices, with Eigen's decomposition; the library must give the same numbers.
#pragma once

#include <MirelAlgorithms/matching/LeastSquares.h>

#include <Eigen/Dense>
#include <algorithm>
#include <cfloat>
#include <cmath>
#include <vector>

namespace literal {

using Doubles = std::vector<double>;

/// The unknowns of a system whose equations have weights.
inline Doubles solve(const Doubles& a, const Doubles& b, const Doubles& weights, int cols) {
  using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
  const auto rows = static_cast<Eigen::Index>(b.size());
  const Eigen::MatrixXd matrix = Eigen::Map<const RowMajor>(a.data(), rows, cols);
  const Eigen::VectorXd w = Eigen::Map<const Eigen::VectorXd>(weights.data(), rows);
  const Eigen::VectorXd x = Eigen::MatrixXd(w.asDiagonal() * matrix)
                                .colPivHouseholderQr()
                                .solve(w.cwiseProduct(Eigen::Map<const Eigen::VectorXd>(b.data(), rows)));
  return {x.begin(), x.end()};
}

struct Robust {
  Doubles x;
  double rms = DBL_MAX;
  std::vector<std::int32_t> outliers;

  Robust(const Doubles& a, const Doubles& b, Doubles start, int rows, double threshold, double minScale)
      : x(std::move(start)) {
    const int cols = static_cast<int>(x.size());
    Doubles weights(rows, 1.0), residuals(rows);
    for (int iteration = 0; iteration < 10; ++iteration) {
      const Doubles s = solve(a, b, weights, cols);
      double squares = 0.0;
      for (int i = 0; i < rows; ++i) {
        residuals[i] = 0.0;
        for (int j = 0; j < cols; ++j) residuals[i] += a[i * cols + j] * s[j];
        residuals[i] -= b[i];
        squares += weights[i] * residuals[i] * (weights[i] * residuals[i]);
      }
      const double figure = std::sqrt(squares) / rows;
      if (!(figure < rms)) return;
      rms = figure;
      x = s;
      outliers.clear();
      for (int i = 0; i < rows; ++i)
        if (weights[i] < DBL_EPSILON) outliers.push_back(i);
      if (figure <= DBL_EPSILON) return;
      MirelAlgorithms::Lsq::lsqWeights(residuals.data(), weights.data(), rows, threshold, minScale);
      if (std::count_if(weights.begin(), weights.end(), [](double v) { return v >= DBL_EPSILON; }) < cols) return;
    }
  }
};

}  // namespace literal
