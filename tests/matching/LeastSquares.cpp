#include <gtest/gtest.h>

#include <random>

#include "LiteralLeastSquares.h"

using namespace MirelAlgorithms;

namespace {

constexpr unsigned plain = 0, robust = 1;

using literal::Doubles;

// One solver for all systems: nothing of one is left in the figures of the next.
TEST(LeastSquares, EqualsTheLiteralSteps) {
  const auto delivered = [](const Doubles& x) {
    const bool all = std::all_of(x.begin(), x.end(), [](double v) { return std::isfinite(v); });
    return all ? x : Doubles(x.size(), 0.5);
  };
  std::mt19937 random(72);
  std::normal_distribution<double> normal;
  int withOutliers = 0;
  Lsq solver;
  EXPECT_TRUE(solver.outliers() == 0 && solver.outlier().empty() && solver.rms() == 0.0);
  for (int i = 0; i < 3000; ++i) {
    const int cols = 1 + static_cast<int>(random() % 9), rows = cols + static_cast<int>(random() % 50);
    Doubles a(rows * cols), b(rows), x(cols, 0.5), plainly = x;
    for (double& value : a) value = i % 4 == 0 ? static_cast<double>(random() % 3) : normal(random);
    for (double& value : b) value = normal(random) * (random() % 6 == 0 ? 1e4 : 1.0);
    if (i % 5 == 0)
      for (int row = 0; row < rows; ++row) b[row] = a[row * cols];  // solved exactly
    // Without a threshold all weights are no numbers, and the first solution stays.
    const double threshold = i % 50 == 0 ? NAN : 1.0 + static_cast<double>(random() % 300) / 100.0;
    const double minScale = i % 3 == 0 ? 0.1 : 0.0;

    const literal::Robust expected(a, b, x, rows, threshold, minScale);
    ASSERT_EQ(solver.lsq(a.data(), b.data(), x.data(), rows, cols, robust, threshold, minScale), 0);
    withOutliers += solver.outliers() > 0;
    ASSERT_EQ(x, delivered(expected.x)) << "case " << i;
    ASSERT_EQ(solver.lsq(a.data(), b.data(), plainly.data(), rows, cols, plain, 0.0, 0.0), 0);
    ASSERT_EQ(plainly, delivered(literal::solve(a, b, Doubles(rows, 1.0), cols))) << "case " << i;
    ASSERT_EQ(solver.rms(), expected.rms) << "case " << i;
    ASSERT_EQ(solver.outlier(), expected.outliers) << "case " << i;
    ASSERT_EQ(solver.outliers(), static_cast<int>(expected.outliers.size()));
  }
  EXPECT_GT(withOutliers, 500);
}

TEST(LeastSquares, SolutionMayOverwriteTheSystem) {
  Doubles a{1, 1, 1, 2, 1, 3, 1, 4}, b{1, 2, 4, 100}, x(2);
  ASSERT_EQ(Lsq().lsq(a.data(), b.data(), x.data(), 4, 2, robust, 1.5, 0.0), 0);
  for (Doubles* target : {&b, &a}) {
    Doubles left = a, right = b;
    double* solution = target == &b ? right.data() : left.data() + 2;
    ASSERT_EQ(Lsq().lsq(left.data(), right.data(), solution, 4, 2, robust, 1.5, 0.0), 0);
    EXPECT_EQ(Doubles(solution, solution + 2), x);
  }
}

TEST(LeastSquares, Weights) {
  struct Row {
    const char* what;
    Doubles residuals;
    double threshold, minScale;
    Doubles weights;
  };
  const double low = std::pow(1.0 - 1.0 / 4.0, 2), mean = (1.0 + low + 0.0) / 3.0;
  for (const Row& row : {
           Row{"equal", {1, -1, 1, -1}, 3.5, 0.0, {1, 1, 1, 1}},
           Row{"all zero", {0, 0, 0}, 3.5, 0.0, {1, 1, 1}},
           Row{"c at the bound", {1, 5}, DBL_EPSILON / 3.0, 0.0, {1, 1}},
           Row{"c = 2 out of the mean, beyond it nothing", {0, -1, 2}, 2.0, 0.5, {1 / mean, low / mean, 0}},
           Row{"c = 2 out of the least scale", {0, -1, 2}, 0.5, 4.0, {1 / mean, low / mean, 0}},
       }) {
    Doubles weights(row.residuals.size(), -1.0), inPlace = row.residuals;
    const int n = static_cast<int>(weights.size());
    EXPECT_EQ(Lsq::lsqWeights(row.residuals.data(), weights.data(), n, row.threshold, row.minScale), 0);
    EXPECT_EQ(weights, row.weights) << row.what;
    EXPECT_EQ(Lsq::lsqWeights(inPlace.data(), inPlace.data(), n, row.threshold, row.minScale), 0);
    EXPECT_EQ(inPlace, row.weights) << row.what;
  }
}

}  // namespace
