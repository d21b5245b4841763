// The loop of LATCH, compiled for each instruction set. The file that includes it defines the attribute MIREL_LATCH and
//
//     Vector, lanes        16-bit integers, and how many
//     load(p)              so many pixels of a row
//     rowsAtOnce           rows of up to 8 pixels that share a vector
//     loadRows(p, step)    8 pixels of each of them
//     loadRow(p)           8 pixels of one row, zeros for the others
//     leading(n)           mask of the first n lanes of each 8 (rows that share a vector) or of all
//     products(a, b, c, mask)
//     sum(v, w), zero()    of 32-bit integers
//     signs(v)             of the sums over each of four vectors, the first one's in bit 3

struct Triplet {
  const std::uint8_t *a, *b, *c;
};

// sum (a - b)^2 - sum (c - b)^2 = sum (a - c) (a + c - 2 b)  over the pixels of three patches, in parts. The factors
// fit 16 bits; for sides up to 181 every partial sum fits 32.
//
// Patches up to 8 pixels wide; `known` is their side or 0.
template <int known>
struct NarrowPatches {
  std::ptrdiff_t step;
  int side;
  Vector mask;

  MIREL_LATCH explicit NarrowPatches(const LatchJob& job)
      : step(job.step), side(known > 0 ? known : job.side), mask(leadingOfEight(side)) {}

  MIREL_LATCH Vector difference(Triplet t) const {
    const int rows = known > 0 ? known : side;
    Vector result = zero();
    for (int row = rowsAtOnce; row <= rows; row += rowsAtOnce) {
      result = sum(result, products(loadRows(t.a, step), loadRows(t.b, step), loadRows(t.c, step), mask));
      t.a += rowsAtOnce * step, t.b += rowsAtOnce * step, t.c += rowsAtOnce * step;
    }
    if (rows % rowsAtOnce != 0) result = sum(result, products(loadRow(t.a), loadRow(t.b), loadRow(t.c), mask));
    return result;
  }
};

// Patches of any width. It is odd, so each row ends in a part of a vector.
struct WidePatches {
  std::ptrdiff_t step;
  int side;
  Vector everything, mask;

  MIREL_LATCH explicit WidePatches(const LatchJob& job)
      : step(job.step), side(job.side), everything(leading(lanes)), mask(leading(side % lanes)) {}

  MIREL_LATCH Vector difference(Triplet t) const {
    Vector result = zero();
    for (int row = 0; row < side; ++row) {
      int column = 0;
      for (; column + lanes <= side; column += lanes)
        result = sum(result, products(load(t.a + column), load(t.b + column), load(t.c + column), everything));
      result = sum(result, products(load(t.a + column), load(t.b + column), load(t.c + column), mask));
      t.a += step, t.b += step, t.c += step;
    }
    return result;
  }
};

// Addresses of the turned centres, relative to the key point's pixel.
MIREL_LATCH inline void turn(const LatchJob& job) {
  constexpr int limit = 24;
  const float *x = job.centres.x.data(), *y = job.centres.y.data();
  const float cosine = job.rotation.cosine, sine = job.rotation.sine;
  const auto step = static_cast<std::int32_t>(job.step);
  for (std::size_t k = 0; k < job.centres.x.size(); ++k) {
    const auto column = static_cast<std::int32_t>(x[k] * cosine - y[k] * sine);
    const auto row = static_cast<std::int32_t>(x[k] * sine + y[k] * cosine);
    job.addresses[k] = std::clamp(row, -limit, limit) * step + std::clamp(column, -limit, limit);
  }
}

template <class Patches>
MIREL_LATCH inline unsigned fourBits(const Patches& patches, const std::uint8_t* corner, const std::int32_t* at) {
  Vector differences[4];
  for (int k = 0; k < 4; ++k)
    differences[k] = patches.difference({corner + at[3 * k], corner + at[3 * k + 1], corner + at[3 * k + 2]});
  return signs(differences);
}

template <class Patches>
MIREL_LATCH void describe(const LatchJob& job) {
  turn(job);
  const Patches patches(job);
  const int halfPatch = job.side / 2;
  const std::uint8_t* corner = job.pixel - halfPatch * job.step - halfPatch;
  const std::size_t bytes = job.centres.x.size() / 24;
  const std::int32_t* at = job.addresses;
  for (std::size_t i = 0; i < bytes; ++i, at += 24)
    job.descriptor[i] =
        static_cast<std::uint8_t>(fourBits(patches, corner, at) << 4 | fourBits(patches, corner, at + 12));
}

inline LatchLoop loopFor(int side) {
  if (side == 7) return describe<NarrowPatches<7>>;  // the usual one, unrolled
  return side <= 8 ? describe<NarrowPatches<0>> : describe<WidePatches>;
}
