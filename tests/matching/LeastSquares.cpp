#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "LiteralLeastSquares.h"

using namespace MirelAlgorithms;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr unsigned plain = 0, robust = 1;

using literal::Doubles;

TEST(LeastSquares, RobustSolveEqualsTheLiteralSteps) {
  std::mt19937 random(72);
  std::normal_distribution<double> normal;
  int withOutliers = 0;
  for (int i = 0; i < 3000; ++i) {
    const int cols = 1 + static_cast<int>(random() % 9), rows = cols + static_cast<int>(random() % 50);
    Doubles a(rows * cols), b(rows), x(cols, 0.5);
    for (double& value : a) value = i % 4 == 0 ? static_cast<double>(random() % 3) : normal(random);
    for (double& value : b) value = normal(random) * (random() % 6 == 0 ? 1e4 : 1.0);
    if (i % 5 == 0)
      for (int row = 0; row < rows; ++row) b[row] = a[row * cols];  // solved exactly
    const double threshold = 1.0 + static_cast<double>(random() % 300) / 100.0, minScale = i % 3 == 0 ? 0.1 : 0.0;

    const literal::Robust expected(a, b, x, rows, threshold, minScale);
    Lsq solver;
    ASSERT_EQ(solver.lsq(a.data(), b.data(), x.data(), rows, cols, robust, threshold, minScale), 0);
    withOutliers += solver.outliers() > 0;
    if (std::any_of(expected.x.begin(), expected.x.end(), [](double v) { return !std::isfinite(v); })) continue;
    ASSERT_EQ(x, expected.x) << "case " << i;
    ASSERT_EQ(solver.rms(), expected.rms) << "case " << i;
    ASSERT_EQ(solver.outlier(), expected.outliers) << "case " << i;
    ASSERT_EQ(solver.outliers(), static_cast<int>(expected.outliers.size()));
  }
  EXPECT_GT(withOutliers, 500);
}

TEST(LeastSquares, GrossOutlierOfALineIsFoundAndLeftOut) {
  constexpr int rows = 20;
  Doubles a, b, x(2);
  for (int i = 0; i < rows; ++i) {
    a.insert(a.end(), {static_cast<double>(i), 1.0});
    b.push_back(3.0 * i - 7.0 + (i == 13 ? 500.0 : 0.01 * (i % 3)));
  }
  Lsq solver;
  EXPECT_TRUE(solver.outliers() == 0 && solver.outlier().empty() && solver.rms() == 0.0);
  ASSERT_EQ(solver.lsq(a.data(), b.data(), x.data(), rows, 2, robust, 3.5, 0.0), 0);
  EXPECT_EQ(solver.outlier(), std::vector<std::int32_t>{13});
  EXPECT_EQ(solver.outliers(), 1);
  EXPECT_NEAR(x[0], 3.0, 0.01);
  EXPECT_NEAR(x[1], -7.0, 0.05);

  const Lsq copy = solver;
  EXPECT_EQ(copy.outlier(), solver.outlier());
  EXPECT_EQ(copy.rms(), solver.rms());

  // The plain solve takes the outlier in and leaves the figures alone.
  ASSERT_EQ(solver.lsq(a.data(), b.data(), x.data(), rows, 2, plain, 0.0, 0.0), 0);
  EXPECT_GT(std::abs(x[0] - 3.0), 1.0);
  EXPECT_EQ(solver.rms(), copy.rms());
  EXPECT_EQ(solver.outliers(), 1);
}

TEST(LeastSquares, RankDeficientSystemHasZeroForTheFreeUnknown) {
  const Doubles a{1, 2, 2, 4, 3, 6}, b{1, 2, 3};
  Doubles x{9, 9};
  ASSERT_EQ(Lsq().lsq(a.data(), b.data(), x.data(), 3, 2, plain, 0.0, 0.0), 0);
  EXPECT_EQ(x[0], 0.0);
  EXPECT_DOUBLE_EQ(x[1], 0.5);
}

// A failed solve forgets the outliers of the one before it.
TEST(LeastSquares, SolverIsAsGoodAsNewAfterAFailure) {
  const Doubles a(30, 1.0);
  Doubles b(30), x(1);
  for (int i = 0; i < 30; ++i) b[i] = 2.0 + 0.01 * (i % 3);
  b[4] = 1000.0;
  Lsq solver;
  ASSERT_EQ(solver.lsq(a.data(), b.data(), x.data(), 30, 1, robust, 3.5, 0.0), 0);
  ASSERT_EQ(solver.outliers(), 1);
  b[4] = notANumber;
  ASSERT_EQ(solver.lsq(a.data(), b.data(), x.data(), 30, 1, robust, 3.5, 0.0), 0);
  EXPECT_EQ(solver.outliers(), 0);
  EXPECT_TRUE(solver.outlier().empty());
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

// Residuals of one size are all outliers at a threshold of 1: no second solve, and the first one stays.
TEST(LeastSquares, WeightsOfNothingEndTheIteration) {
  const Doubles a{1, 1, 1, 1}, b{1, -1, 1, -1};
  for (const double threshold : {1.0, notANumber}) {
    Doubles x{5};
    Lsq solver;
    ASSERT_EQ(solver.lsq(a.data(), b.data(), x.data(), 4, 1, robust, threshold, 0.0), 0);
    EXPECT_EQ(x[0], 0.0);
    EXPECT_EQ(solver.rms(), 0.5);
    EXPECT_EQ(solver.outliers(), 0);
  }
}

}  // namespace
