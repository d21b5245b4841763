#include <MirelAlgorithms/matching/LeastSquares.h>
#include <MirelAlgorithms/matching/internal/ColumnPasses.h>
#include <MirelAlgorithms/matching/internal/PivotedQr.h>

#include <algorithm>
#include <cmath>

namespace MirelAlgorithms {
namespace {

constexpr int success = 0;
constexpr int invalidArguments = 27;

bool systemFits(const double* a, const double* b, const double* x, int rows, int cols) {
  return a && b && x && cols >= 1 && rows >= cols;
}

/// Writes the solution when all of it is finite.
void deliver(const std::vector<double>& solution, double* x) {
  if (std::all_of(solution.begin(), solution.end(), [](double value) { return std::isfinite(value); }))
    std::copy(solution.begin(), solution.end(), x);
}

/// Tukey's biweight, normalised to a mean of 1.
void biweights(const double* residuals, double* weights, int n, double c) {
  if (c <= std::numeric_limits<double>::epsilon())
    std::fill_n(weights, n, 1.0);
  else
    columnPasses().biweights(residuals, c, weights, n);
}

}  // namespace

Lsq::~Lsq() = default;

int Lsq::lsq(const double* a, const double* b, double* x, int rows, int cols, unsigned int mode, double threshold,
             double minScale) {
  switch (mode) {
    case 0:
      return lsqCore(a, b, x, rows, cols);
    case 1:
      return lsqRobust(a, b, x, rows, cols, threshold, minScale);
    default:
      return invalidArguments;
  }
}

int Lsq::lsqWeights(const double* residuals, double* weights, int n, double threshold, double minScale) {
  if (!residuals || !weights || n < 1) return invalidArguments;
  double sum = 0.0;
  for (int i = 0; i < n; ++i) sum += std::abs(residuals[i]);
  biweights(residuals, weights, n, threshold * std::max(sum / n, minScale));
  return success;
}

int Lsq::lsqCore(const double* a, const double* b, double* x, int rows, int cols) {
  if (!systemFits(a, b, x, rows, cols)) return invalidArguments;
  PivotedQr qr(a, rows, cols);
  const std::vector<double> weights(rows, 1.0);
  std::vector<double> solution(cols);
  qr.solve(b, weights.data(), solution.data());
  deliver(solution, x);
  return success;
}

int Lsq::lsqRobust(const double* a, const double* b, double* x, int rows, int cols, double threshold, double minScale) {
  if (!systemFits(a, b, x, rows, cols) || threshold < 1.0) return invalidArguments;
  PivotedQr qr(a, rows, cols);
  std::vector<double> weights(rows, 1.0), residuals(rows), trial(cols);
  std::vector<double> acceptedWeights(rows, 1.0), accepted(x, x + cols);
  rmsValue_ = (std::numeric_limits<double>::max)();

  for (int iteration = 0; iteration < maxIterations_; ++iteration) {
    qr.solve(b, weights.data(), trial.data());
    const ResidualSums sums = qr.residuals(trial.data(), b, weights.data(), residuals.data());
    const double figure = std::sqrt(sums.weightedSquares) / rows;
    if (!(figure < rmsValue_)) break;
    rmsValue_ = figure;
    accepted.swap(trial);
    acceptedWeights.swap(weights);
    if (figure <= tolerance_) break;

    biweights(residuals.data(), weights.data(), rows, threshold * std::max(sums.absolute / rows, minScale));
    const auto kept = [this](double weight) { return weight >= tolerance_; };
    if (std::count_if(weights.begin(), weights.end(), kept) < cols) break;
  }

  outlierRows_.clear();
  for (int i = 0; i < rows; ++i)
    if (acceptedWeights[i] < tolerance_) outlierRows_.push_back(i);
  outlierCount_ = static_cast<std::int32_t>(outlierRows_.size());
  deliver(accepted, x);
  return success;
}

}  // namespace MirelAlgorithms
