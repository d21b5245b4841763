/// Least squares: the same bits as the documented steps done with Eigen, for every instruction set; hostile systems end
/// with a finite solution or none.
#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/matching/LeastSquares.h>

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <vector>

#include "Check.h"

namespace {

using namespace MirelAlgorithms;
using Matrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
using Vector = Eigen::VectorXd;

constexpr double epsilon = std::numeric_limits<double>::epsilon(), largest = (std::numeric_limits<double>::max)();

struct Fit {
  Vector x, weights;
  double figure = largest;
};

Vector solve(const Matrix& a, const Vector& b, const Vector& weights) {
  const Eigen::MatrixXd weighted = weights.asDiagonal() * a;
  return weighted.colPivHouseholderQr().solve(weights.cwiseProduct(b));
}

Fit robustFit(const Matrix& a, const Vector& b, const Vector& before, double threshold, double minScale) {
  const auto rows = a.rows();
  Fit fit{before, Vector::Ones(rows)};
  Vector weights = fit.weights, residuals(rows);
  for (int iteration = 0; iteration < 10; ++iteration) {
    const Vector x = solve(a, b, weights);
    double squares = 0;
    for (Eigen::Index i = 0; i < rows; ++i) {
      double sum = 0;
      for (Eigen::Index j = 0; j < a.cols(); ++j) sum += x[j] * a(i, j);
      residuals[i] = sum - b[i];
      squares += (weights[i] * residuals[i]) * (weights[i] * residuals[i]);
    }
    const double figure = std::sqrt(squares) / static_cast<double>(rows);
    if (!(figure < fit.figure)) break;
    fit = {x, weights, figure};
    if (figure <= epsilon) break;
    Lsq::lsqWeights(residuals.data(), weights.data(), static_cast<int>(rows), threshold, minScale);
    if ((weights.array() >= epsilon).count() < a.cols()) break;
  }
  return fit;
}

bool same(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b)); }

bool sameBytes(const double* a, const double* b, Eigen::Index count) {
  return std::equal(a, a + count, b, [](double x, double y) { return std::memcmp(&x, &y, sizeof x) == 0; });
}

void checkWeights(const Vector& residuals, double threshold, double minScale) {
  const int n = static_cast<int>(residuals.size());
  Vector weights(n), wanted(n), inPlace = residuals;
  MIREL_CHECK(Lsq::lsqWeights(residuals.data(), weights.data(), n, threshold, minScale) == 0);
  MIREL_CHECK(Lsq::lsqWeights(inPlace.data(), inPlace.data(), n, threshold, minScale) == 0);
  double absolute = 0, sum = 0;
  for (int i = 0; i < n; ++i) absolute += std::abs(residuals[i]);
  const double c = threshold * std::max(absolute / n, minScale);
  for (int i = 0; i < n; ++i) {
    const double w = std::max(0.0, 1 - residuals[i] * residuals[i] / (c * c));
    sum += wanted[i] = w * w;
  }
  for (int i = 0; i < n; ++i) {
    MIREL_CHECK(same(weights[i], inPlace[i]));
    if (c <= epsilon) MIREL_CHECK(weights[i] == 1);
    if (std::isfinite(c) && c > epsilon && std::isfinite(c * c) && residuals.allFinite())
      MIREL_CHECK(!(std::abs(weights[i] - wanted[i] / (sum / n)) > 1e-9 * (1 + weights[i])));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  FuzzedDataProvider data(bytes, size);
  limitCpuVariant(data.PickValueInArray({CpuVariant::baseline, CpuVariant::avx2, CpuVariant::avx512}));
  const int cols = data.ConsumeIntegralInRange(0, 10), rows = data.ConsumeIntegralInRange(0, 40);
  const unsigned mode = data.PickValueInArray({0u, 1u, 1u, 2u});
  const double threshold = data.ConsumeBool() ? 3.5 : anyReal<double>(data), minScale = anyReal<double>(data);
  Matrix a(rows, cols);
  Vector b(rows);
  Vector before = Vector::Constant(cols, 17);
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < cols; ++j) a(i, j) = anyReal<double>(data);
    b[i] = anyReal<double>(data);
  }
  const Matrix aBefore = a;
  const Vector bBefore = b;

  Lsq solver;
  Vector x = before;
  const int code = solver.lsq(a.data(), b.data(), x.data(), rows, cols, mode, threshold, minScale);
  const bool fits = cols >= 1 && rows >= cols && mode <= 1 && !(mode == 1 && threshold < 1.0);
  MIREL_CHECK(code == (fits ? 0 : 27));
  MIREL_CHECK(sameBytes(a.data(), aBefore.data(), a.size()));
  MIREL_CHECK(sameBytes(b.data(), bBefore.data(), b.size()));
  MIREL_CHECK(x.allFinite());
  if (rows > 0) checkWeights(b, threshold, minScale);
  if (!fits) {
    MIREL_CHECK(x == before && solver.rms() == 0.0);
    return 0;
  }

  const Fit fit = mode == 0 ? Fit{solve(a, b, Vector::Ones(rows)), Vector::Ones(rows)}
                            : robustFit(a, b, before, threshold, minScale);
  const Vector& wanted = fit.x.allFinite() ? fit.x : before;
  MIREL_CHECK(x == wanted);  // a right-hand side of zeros alone can end in a zero of the other sign
  if (mode == 0) return 0;
  MIREL_CHECK(same(solver.rms(), fit.figure));
  std::vector<std::int32_t> outlier;
  for (int i = 0; i < rows; ++i)
    if (fit.weights[i] < epsilon) outlier.push_back(i);
  MIREL_CHECK(solver.outlier() == outlier && solver.outliers() == static_cast<int>(outlier.size()));

  if (rows > cols) {  // the solution may take the place of the right-hand side
    MIREL_CHECK(Lsq().lsq(a.data(), b.data(), b.data() + 1, rows, cols, mode, threshold, minScale) == 0);
    if (fit.figure < largest && fit.x.allFinite()) MIREL_CHECK(sameBytes(b.data() + 1, x.data(), cols));
  }
  return 0;
}
