/// Least squares: the same bits as the documented steps done with Eigen; hostile systems end with a finite solution or
/// none.
#include <MirelAlgorithms/matching/LeastSquares.h>
#include <matching/LiteralLeastSquares.h>

#include "Check.h"

using namespace MirelAlgorithms;
using literal::Doubles;

void feed(FuzzedDataProvider& data) {
  const int cols = data.ConsumeIntegralInRange(0, 10), rows = data.ConsumeIntegralInRange(0, 40);
  const unsigned mode = data.PickValueInArray({0u, 1u, 1u, 2u});
  const double threshold = data.ConsumeBool() ? 3.5 : anyReal<double>(data), minScale = anyReal<double>(data);
  Doubles a, b;
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < cols; ++j) a.push_back(anyReal<double>(data));
    b.push_back(anyReal<double>(data));
  }
  const Doubles aBefore = a, bBefore = b, before(cols, 17);
  Doubles x = before;
  Lsq solver;
  const int code = solver.lsq(a.data(), b.data(), x.data(), rows, cols, mode, threshold, minScale);
  const bool fits = cols >= 1 && rows >= cols && mode <= 1 && !(mode == 1 && threshold < 1.0);
  MIREL_CHECK(code == (fits ? 0 : 27));
  MIREL_CHECK(sameBits(a, aBefore) && sameBits(b, bBefore));
  if (!fits) {
    MIREL_CHECK(x == before && solver.rms() == 0.0);
    return;
  }

  const literal::Robust robust(a, b, before, rows, threshold, minScale);
  const Doubles wanted = mode == 0 ? literal::solve(a, b, Doubles(rows, 1.0), cols) : robust.x;
  const bool solved = std::all_of(wanted.begin(), wanted.end(), [](double v) { return std::isfinite(v); });
  MIREL_CHECK(x == (solved ? wanted : before));  // a right-hand side of zeros can end
                                                 // in a zero of the other sign
  if (mode == 0) return;
  MIREL_CHECK(solver.rms() == robust.rms && solver.outlier() == robust.outliers);
  MIREL_CHECK(solver.outliers() == static_cast<int>(robust.outliers.size()));
}
