// The passes, written once over vectors of four rows and included by one source per instruction set. That source has
// made MIREL_PASS the attribute of functions that use the instruction set, and defined for four consecutive rows:
//
//     Rows, + - * /
//     everyRow(value), loadRows(p), store(p, rows)
//     positive(rows)                                0 for what is below or not a number
//     lowerPair, upperPair                          two rows each

using Index = ColumnPasses::Index;

// One row, for what four do not divide.
MIREL_PASS inline void store(double* p, double row) { *p = row; }
MIREL_PASS inline double positive(double row) { return row > 0.0 ? row : 0.0; }

template <class V>
MIREL_PASS inline V load(const double* p) {
  if constexpr (sizeof(V) == sizeof(double))
    return *p;
  else
    return loadRows(p);
}

template <class V>
MIREL_PASS inline V every(double value) {
  if constexpr (sizeof(V) == sizeof(double))
    return value;
  else
    return everyRow(value);
}

MIREL_PASS inline double first(__m128d pair) { return _mm_cvtsd_f64(pair); }
MIREL_PASS inline double second(__m128d pair) { return _mm_cvtsd_f64(_mm_unpackhi_pd(pair, pair)); }

// Rows of a column, from i on, as they will be.
template <class V>
MIREL_PASS inline V updated(const double* column, double factor, PendingReflector pending, Index i) {
  return load<V>(column + i) - every<V>(factor) * (every<V>(pending.tau) * load<V>(pending.v + i));
}

// Sum over the rows from i on, given the sums of the rows before it in four lanes.
template <class Term>
MIREL_PASS inline double finishFours(Rows lanes, Index i, Index rows, const Term& term) {
  const __m128d pair = _mm_add_pd(lowerPair(lanes), upperPair(lanes));
  double even = first(pair), odd = second(pair);
  if (i + 2 <= rows) {
    even += term.template operator()<double>(i);
    odd += term.template operator()<double>(i + 1);
    i += 2;
  }
  double sum = even + odd;
  if (i < rows) sum += term.template operator()<double>(i);
  return sum;
}

// Sum over all rows in four lanes; `term.operator()<V>(i)` gives the terms of the rows from i on.
template <class Term>
MIREL_PASS inline double sumInFours(Index rows, const Term& term) {
  Rows lanes = everyRow(0.0);
  Index i = 0;
  for (; i + 4 <= rows; i += 4) lanes = lanes + term.template operator()<Rows>(i);
  return finishFours(lanes, i, rows, term);
}

struct WeighedSquare {
  double* column;
  const double* source;
  const double* weights;

  template <class V>
  MIREL_PASS V operator()(Index i) const {
    const V value = load<V>(source + i) * load<V>(weights + i);
    store(column + i, value);
    return value * value;
  }
};

// Four columns side by side, so that their sums do not wait for each other.
MIREL_PASS inline void weighFour(const WeighedSquare (&column)[4], double* squares, Index rows) {
  Rows lanes[4];
  for (int c = 0; c < 4; ++c) lanes[c] = everyRow(0.0);
  Index i = 0;
  for (; i + 4 <= rows; i += 4)
    for (int c = 0; c < 4; ++c) lanes[c] = lanes[c] + column[c].template operator()<Rows>(i);
  for (int c = 0; c < 4; ++c) squares[c] = finishFours(lanes[c], i, rows, column[c]);
}

MIREL_PASS void weigh(double* columns, Index stride, const double* sources, Index sourceStride, Index count,
                      const double* weights, double* squares, Index rows) {
  const auto column = [=](Index c) { return WeighedSquare{columns + c * stride, sources + c * sourceStride, weights}; };
  Index c = 0;
  for (; c + 4 <= count; c += 4) weighFour({column(c), column(c + 1), column(c + 2), column(c + 3)}, squares + c, rows);
  for (; c < count; ++c) squares[c] = sumInFours(rows, column(c));
}

struct RemainingSquare {
  const double* column;
  double factor;
  PendingReflector pending;

  template <class V>
  MIREL_PASS V operator()(Index i) const {
    const V value = updated<V>(column, factor, pending, i);
    return value * value;
  }
};

MIREL_PASS double remainingSquares(const double* column, double factor, PendingReflector pending, Index rows) {
  return sumInFours(rows, RemainingSquare{column, factor, pending});
}

struct ReflectorTerm {
  double* pivot;
  double factor, divisor;
  double* other;
  double otherFactor;
  PendingReflector pending;

  template <class V>
  MIREL_PASS V operator()(Index i) const {
    const V v = updated<V>(pivot, factor, pending, i) / every<V>(divisor);
    const V value = updated<V>(other, otherFactor, pending, i);
    store(pivot + i, v);
    store(other + i, value);
    return value * v;
  }
};

MIREL_PASS double makeReflector(double* pivot, double factor, double divisor, double* other, double otherFactor,
                                PendingReflector pending, Index rows) {
  return sumInFours(rows, ReflectorTerm{pivot, factor, divisor, other, otherFactor, pending});
}

struct Projection {
  double* column;
  double factor;

  template <class V>
  MIREL_PASS V operator()(Index i, V change, V v) const {
    const V value = load<V>(column + i) - every<V>(factor) * change;
    store(column + i, value);
    return value * v;
  }
};

// A few columns side by side, each summed in two lanes.
template <int n>
MIREL_PASS inline void projectGroup(const Projection* column, PendingReflector pending, const double* v,
                                    double* products, Index rows) {
  __m128d lanes[n];
  for (int c = 0; c < n; ++c) lanes[c] = _mm_setzero_pd();
  Index i = 0;
  for (; i + 4 <= rows; i += 4) {
    const Rows change = everyRow(pending.tau) * loadRows(pending.v + i), unit = loadRows(v + i);
    for (int c = 0; c < n; ++c) {
      const Rows term = column[c](i, change, unit);
      lanes[c] = _mm_add_pd(_mm_add_pd(lanes[c], lowerPair(term)), upperPair(term));
    }
  }
  for (int c = 0; c < n; ++c) {
    const auto term = [&](Index k) { return column[c](k, pending.tau * pending.v[k], v[k]); };
    double even = first(lanes[c]), odd = second(lanes[c]);
    const Index pairs = rows / 2 * 2;
    if (i < pairs) {
      even += term(i);
      odd += term(i + 1);
    }
    products[c] = even + odd;
    if (pairs < rows) products[c] += term(pairs);
  }
}

// A single column is summed in four lanes: Eigen takes it for a vector.
struct SingleProjection {
  Projection column;
  PendingReflector pending;
  const double* v;

  template <class V>
  MIREL_PASS V operator()(Index i) const {
    return column(i, every<V>(pending.tau) * load<V>(pending.v + i), load<V>(v + i));
  }
};

MIREL_PASS void project(double* const* columns, Index firstRow, const double* factors, Index count,
                        PendingReflector pending, const double* v, double* products, Index rows) {
  Projection group[4];
  Index size = 0;
  for (Index c = 0; c < count; c += size) {
    size = count - c < 4 ? count - c : 4;
    for (Index g = 0; g < size; ++g) group[g] = {columns[c + g] + firstRow, factors[c + g]};
    if (count == 1)
      products[c] = sumInFours(rows, SingleProjection{group[0], pending, v});
    else if (size == 4)
      projectGroup<4>(group, pending, v, products + c, rows);
    else if (size == 3)
      projectGroup<3>(group, pending, v, products + c, rows);
    else if (size == 2)
      projectGroup<2>(group, pending, v, products + c, rows);
    else
      projectGroup<1>(group, pending, v, products + c, rows);
  }
}

struct Residual {
  const double* columns;
  const double* x;
  Index count, stride;
  const double* b;

  template <class V>
  MIREL_PASS V operator()(Index i) const {
    V value = every<V>(0.0);
    for (Index j = 0; j < count; ++j) value = value + load<V>(columns + j * stride + i) * every<V>(x[j]);
    return value - load<V>(b + i);
  }
};

MIREL_PASS ResidualSums residuals(const double* columns, const double* x, Index count, const double* b,
                                  const double* weights, double* residuals, Index rows) {
  const Residual residual{columns, x, count, rows, b};
  ResidualSums sums;
  const auto add = [&](Index i) {
    const double weighted = weights[i] * residuals[i];
    sums.absolute += std::abs(residuals[i]);
    sums.weightedSquares += weighted * weighted;
  };
  Index i = 0;
  for (; i + 4 <= rows; i += 4) {
    store(residuals + i, residual.template operator()<Rows>(i));
    for (int l = 0; l < 4; ++l) add(i + l);
  }
  for (; i < rows; ++i) {
    residuals[i] = residual.template operator()<double>(i);
    add(i);
  }
  return sums;
}

struct Biweight {
  const double* residuals;
  double c;

  template <class V>
  MIREL_PASS V operator()(Index i) const {
    const V r = load<V>(residuals + i);
    const V inside = positive(every<V>(1.0) - r * r / every<V>(c * c));
    return inside * inside;
  }
};

MIREL_PASS void biweights(const double* residuals, double c, double* weights, Index rows) {
  const Biweight weight{residuals, c};
  double sum = 0.0;
  Index i = 0;
  for (; i + 4 <= rows; i += 4) {
    store(weights + i, weight.template operator()<Rows>(i));
    for (int l = 0; l < 4; ++l) sum += weights[i + l];
  }
  for (; i < rows; ++i) {
    weights[i] = weight.template operator()<double>(i);
    sum += weights[i];
  }
  const double mean = sum / static_cast<double>(rows);
  for (i = 0; i < rows; ++i) weights[i] /= mean;
}

constexpr ColumnPasses passes{weigh, remainingSquares, makeReflector, project, residuals, biweights};
