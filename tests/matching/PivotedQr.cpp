#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/matching/internal/PivotedQr.h>
#include <filters/SameBits.h>
#include <gtest/gtest.h>

#include <Eigen/Dense>

using namespace MirelAlgorithms;

namespace {

using Matrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

struct System {
  Matrix a;
  Eigen::VectorXd b, weights;
};

enum Kind { ordinary, scaled, dependent, parallel, integers, zeroRows, diagonal, hostile, kinds };

System randomSystem(std::mt19937& random, int kind) {
  std::normal_distribution<double> normal;
  const int cols = 1 + static_cast<int>(random() % 20), rows = cols + static_cast<int>(random() % 40);
  const auto noise = [&] { return normal(random); };
  System system{Matrix::NullaryExpr(rows, cols, noise), Eigen::VectorXd::NullaryExpr(rows, noise),
                Eigen::VectorXd::NullaryExpr(rows, noise)};
  Matrix& a = system.a;
  if (kind == scaled)
    for (int j = 0; j < cols; ++j) a.col(j) *= std::pow(10.0, j);
  if (kind == dependent && cols > 2) a.col(cols - 1) = 2.0 * a.col(0) - a.col(1);
  if (kind == parallel)
    for (int j = 1; j < cols; ++j) a.col(j) = a.col(0) + 1e-7 * a.col(j);
  if (kind == integers) a = a.array().round().matrix();
  if (kind == zeroRows)
    for (int i = 0; i < rows; i += 2) system.weights[i] = 0.0;
  if (kind == diagonal) a.triangularView<Eigen::StrictlyLower>().setZero(), system.weights.setOnes();
  if (kind == hostile) {
    const double values[] = {std::nan(""), std::numeric_limits<double>::infinity(), 1e200, 1e-200};
    a(random() % rows, random() % cols) = values[random() % 4];
  }
  return system;
}

TEST(PivotedQr, EqualsEigenBitForBit) {
  std::mt19937 random(71);
  for (int i = 0; i < 16000; ++i) {
    const int kind = i / 2 % kinds;
    limitCpuVariant(i % 2 == 0 ? CpuVariant::baseline : CpuVariant::avx2);
    const System system = randomSystem(random, kind);
    const Eigen::MatrixXd weighted = system.weights.asDiagonal() * system.a;
    const Eigen::VectorXd expected = weighted.colPivHouseholderQr().solve(system.weights.cwiseProduct(system.b));
    Eigen::VectorXd x(system.a.cols());
    PivotedQr(system.a.data(), system.a.rows(), system.a.cols())
        .solve(system.b.data(), system.weights.data(), x.data());
    for (int j = 0; j < x.size(); ++j)
      ASSERT_TRUE(sameBits(x[j], expected[j]))
          << name(cpuVariant()) << ", case " << i << ", kind " << kind << ", " << system.a.rows() << " x "
          << system.a.cols() << ": " << x[j] << ", Eigen " << expected[j];
  }
  limitCpuVariant(CpuVariant::avx512);
}

}  // namespace
