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

// tau * v of the rows from i on.
template <class V>
MIREL_PASS inline V changeAt(PendingReflector pending, Index i) {
  return every<V>(pending.tau) * load<V>(pending.v + i);
}

MIREL_PASS inline __m128d addTwos(__m128d lanes, Rows rows) {
  return _mm_add_pd(_mm_add_pd(lanes, lowerPair(rows)), upperPair(rows));
}

// Sum over the last rows, from i on (fewer than four), given the sums of the rows before them in two lanes.
template <class Term>
MIREL_PASS inline double finishTwos(__m128d lanes, Index i, Index rows, const Term& term) {
  double even = first(lanes), odd = second(lanes);
  if (i + 2 <= rows) {
    even += term.template operator()<double>(i);
    odd += term.template operator()<double>(i + 1);
    i += 2;
  }
  double sum = even + odd;
  if (i < rows) sum += term.template operator()<double>(i);
  return sum;
}

// The same in four lanes.
template <class Term>
MIREL_PASS inline double finishFours(Rows lanes, Index i, Index rows, const Term& term) {
  return finishTwos(_mm_add_pd(lowerPair(lanes), upperPair(lanes)), i, rows, term);
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

MIREL_PASS void weigh(double* columns, const double* sources, Index stride, Index count, const double* weights,
                      double* squares, Index rows) {
  const auto column = [=](Index c) { return WeighedSquare{columns + c * stride, sources + c * stride, weights}; };
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
    const V value = load<V>(column + i) - every<V>(factor) * changeAt<V>(pending, i);
    return value * value;
  }
};

MIREL_PASS double remainingSquares(const double* column, double factor, PendingReflector pending, Index rows) {
  return sumInFours(rows, RemainingSquare{column, factor, pending});
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

struct ProjectionTerm {
  Projection projection;
  PendingReflector pending;
  const double* v;

  template <class V>
  MIREL_PASS V operator()(Index i) const {
    return projection(i, changeAt<V>(pending, i), load<V>(v + i));
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
    const Rows change = changeAt<Rows>(pending, i), unit = loadRows(v + i);
    for (int c = 0; c < n; ++c) lanes[c] = addTwos(lanes[c], column[c](i, change, unit));
  }
  for (int c = 0; c < n; ++c) products[c] = finishTwos(lanes[c], i, rows, ProjectionTerm{column[c], pending, v});
}

MIREL_PASS inline void projectGroup(const Projection* column, Index count, PendingReflector pending, const double* v,
                                    double* products, Index rows) {
  if (count == 4)
    projectGroup<4>(column, pending, v, products, rows);
  else if (count == 3)
    projectGroup<3>(column, pending, v, products, rows);
  else if (count == 2)
    projectGroup<2>(column, pending, v, products, rows);
  else
    projectGroup<1>(column, pending, v, products, rows);
}

// The division takes its time: the right-hand side and a few columns go along.
template <int n>
MIREL_PASS inline double reflectGroup(double* pivot, double factor, double divisor, const Projection& other,
                                      const Projection* column, PendingReflector pending, double* products,
                                      Index rows) {
  Rows lanes = everyRow(0.0);
  __m128d columnLanes[n + 1];
  for (int c = 0; c < n; ++c) columnLanes[c] = _mm_setzero_pd();
  Index i = 0;
  for (; i + 4 <= rows; i += 4) {
    const Rows change = changeAt<Rows>(pending, i);
    const Rows v = (loadRows(pivot + i) - everyRow(factor) * change) / everyRow(divisor);
    store(pivot + i, v);
    lanes = lanes + other(i, change, v);
    for (int c = 0; c < n; ++c) columnLanes[c] = addTwos(columnLanes[c], column[c](i, change, v));
  }
  for (Index k = i; k < rows; ++k) pivot[k] = (pivot[k] - factor * changeAt<double>(pending, k)) / divisor;
  for (int c = 0; c < n; ++c)
    products[c] = finishTwos(columnLanes[c], i, rows, ProjectionTerm{column[c], pending, pivot});
  return finishFours(lanes, i, rows, ProjectionTerm{other, pending, pivot});
}

MIREL_PASS double reflect(double* pivot, double factor, double divisor, double* other, double otherFactor,
                          double* const* columns, Index firstRow, Index count, double* factors,
                          PendingReflector pending, Index rows) {
  const auto projection = [=](Index c) { return Projection{columns[c] + firstRow, factors[c]}; };
  const Projection side{other, otherFactor};
  if (count < 2) {
    const double product = reflectGroup<0>(pivot, factor, divisor, side, nullptr, pending, nullptr, rows);
    // Eigen takes a single column for a vector, whose product is summed in four lanes.
    if (count == 1) factors[0] = sumInFours(rows, ProjectionTerm{projection(0), pending, pivot});
    return product;
  }
  Projection group[4];
  Index c = count < 3 ? count : 3;
  for (Index g = 0; g < c; ++g) group[g] = projection(g);
  const double product = c == 3 ? reflectGroup<3>(pivot, factor, divisor, side, group, pending, factors, rows)
                                : reflectGroup<2>(pivot, factor, divisor, side, group, pending, factors, rows);
  while (c < count) {
    const Index size = count - c < 4 ? count - c : 4;
    for (Index g = 0; g < size; ++g) group[g] = projection(c + g);
    projectGroup(group, size, pending, pivot, factors + c, rows);
    c += size;
  }
  return product;
}

struct Residual {
  const double* columns;
  Index stride;
  const double* x;
  Index count;
  const double* b;

  template <class V>
  MIREL_PASS V operator()(Index i) const {
    V value = every<V>(0.0);
    for (Index j = 0; j < count; ++j) value = value + load<V>(columns + j * stride + i) * every<V>(x[j]);
    return value - load<V>(b + i);
  }
};

MIREL_PASS ResidualSums residuals(const double* columns, Index stride, const double* x, Index count, const double* b,
                                  const double* weights, double* residuals, Index rows) {
  const Residual residual{columns, stride, x, count, b};
  double absolute = 0.0, squares = 0.0;
  for (Index i = 0; i < rows;) {
    Index end = i + 4;
    if (end <= rows) {
      store(residuals + i, residual.template operator()<Rows>(i));
    } else {
      end = i + 1;
      residuals[i] = residual.template operator()<double>(i);
    }
    for (; i < end; ++i) {
      const double weighted = weights[i] * residuals[i];
      absolute += std::abs(residuals[i]);
      squares += weighted * weighted;
    }
  }
  return {absolute, squares};
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

constexpr ColumnPasses passes{weigh, remainingSquares, reflect, residuals, biweights};
