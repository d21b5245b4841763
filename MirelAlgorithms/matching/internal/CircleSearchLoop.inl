// The loop of `CircleSearch`, written once over vectors of sixteen lanes and included by one source per instruction
// set. That source has made MIREL_SEARCH the attribute of functions that use the instruction set, and defined:
//
//     Distances                               sixteen 16-bit numbers
//     everyLane, load, store                  a value in every lane; from and to memory
//     lesser, larger, either                  minimum, maximum, bitwise or, lane by lane
//     equalLanes(d, value)                    bits 2k and 2k + 1: lane k has the value
//     upperHalf, lowerHalf                    eight lanes each
//     Circle, broadcast(prediction)
//     outside(circle, x, y)                   all bits of the lanes of points that lie outside
//     reaching(circle, boxes)                 bit k: box k may reach into the circle
//     differingBits(query, block)             Hamming distances to the features of a block
//     scaled(d, shift)                        d << shift, low 16 bits

// Numbers of all blocks; returns how many.
inline std::size_t listAll(const CircleSearchJob& job) {
  const std::size_t count = job.features.blocks();
  std::iota(job.list, job.list + count, std::uint32_t{0});
  return count;
}

// Numbers of the blocks that may reach into the circle, ascending; returns how many.
MIREL_SEARCH inline std::size_t listBlocks(const CircleSearchJob& job) {
  const Circle circle = broadcast(job.circle);
  const std::vector<BoxLanes>& boxes = job.features.boxes;
  std::size_t count = 0;
  for (std::size_t group = 0; group < boxes.size(); ++group)
    for (unsigned bits = reaching(circle, boxes[group]); bits != 0; bits &= bits - 1)
      job.list[count++] =
          static_cast<std::uint32_t>(group * blockSize) + static_cast<std::uint32_t>(std::countr_zero(bits));
  while (count > 0 && job.list[count - 1] >= job.features.blocks()) --count;  // boxes to spare
  return count;
}

// Two smallest of the numbers in eight lanes each.
MIREL_SEARCH inline BestTwo smallestTwo(__m128i least, __m128i second) {
  const __m128i numbers = _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7);
  const __m128i first = _mm_minpos_epu16(least);  // value in lane 0, lane number in lane 1
  const __m128i lane = _mm_shuffle_epi8(first, _mm_set1_epi16(0x0302));
  const __m128i others = _mm_min_epu16(second, _mm_or_si128(least, _mm_cmpeq_epi16(numbers, lane)));
  BestTwo result;
  result.best = static_cast<std::uint16_t>(_mm_cvtsi128_si32(first));
  result.second = static_cast<std::uint16_t>(_mm_cvtsi128_si32(_mm_minpos_epu16(others)));
  return result;
}

MIREL_SEARCH inline BestTwo smallestTwo(Distances least, Distances second) {
  const __m128i a = lowerHalf(least), b = upperHalf(least);
  const __m128i rest = _mm_min_epu16(lowerHalf(second), upperHalf(second));
  return smallestTwo(_mm_min_epu16(a, b), _mm_min_epu16(rest, _mm_max_epu16(a, b)));
}

// Where the best distance is; on ties the key point of lowest number.
MIREL_SEARCH inline void findBest(const CircleSearchJob& job, std::size_t count, BestTwo& result) {
  for (std::size_t n = 0; n < count; ++n) {
    for (std::uint32_t bits = equalLanes(load(job.distances[n]), result.best); bits != 0;) {
      const int lane = std::countr_zero(bits) / 2;
      bits &= ~(3u << 2 * lane);
      const std::int32_t index = job.features.index[job.list[n]].lane[lane];
      if (result.index >= 0 && result.index < index) continue;
      result.index = index;
      result.place = static_cast<std::int32_t>(job.list[n] * blockSize) + lane;
    }
  }
}

// All bits in the places to spare of the last block.
inline Lanes<std::uint16_t> placesToSpare(const FeatureBlocks& features) {
  Lanes<std::uint16_t> spare{};
  std::fill(spare.lane + (features.size - 1) % blockSize + 1, spare.lane + blockSize, notMeasured);
  return spare;
}

// One distance for each feature of a block goes into the minima.
MIREL_SEARCH inline void lower(Lanes<std::uint16_t>& least, Lanes<std::uint16_t>& second, Distances d) {
  const Distances before = load(least);
  store(second, lesser(load(second), larger(before, d)));
  store(least, lesser(before, d));
}

template <int length>
MIREL_SEARCH BestTwo circleSearch(const CircleSearchJob& job) {
  const FeatureBlocks& features = job.features;
  const bool everywhere = features.allInside(job.circle), again = job.measured != nullptr;
  const std::size_t count = everywhere ? listAll(job) : listBlocks(job);

  // In registers: the compiler has to assume that the stores below change anything in memory.
  const QueryWords<length> query(job.descriptor, features.words);
  const Circle circle = broadcast(job.circle), measured = broadcast(again ? *job.measured : job.circle);
  const Distances spare = load(placesToSpare(features));
  const std::size_t last = features.blocks() - 1;
  const unsigned shift = features.shift;
  const Lanes<std::uint64_t>* const descriptors = features.descriptors.data();
  const Lanes<float>* const x = features.x.data();
  const Lanes<float>* const y = features.y.data();
  const std::uint32_t* const list = job.list;
  Lanes<std::uint16_t>* const distances = job.distances;
  Lanes<std::uint16_t>* const columnLeast = job.columns ? job.columns->least.data() : nullptr;
  Lanes<std::uint16_t>* const columnSecond = job.columns ? job.columns->second.data() : nullptr;

  Distances least = everyLane(notMeasured), second = least;
  for (std::size_t n = 0; n < count; ++n) {
    const std::size_t block = list[n];
    Distances d = scaled(differingBits(query, &descriptors[block * query.size()]), shift);
    if (!everywhere) d = either(d, outside(circle, x[block], y[block]));
    if (again) d = either(d, outside(measured, x[block], y[block]));
    if (block == last) d = either(d, spare);
    if (columnLeast) lower(columnLeast[block], columnSecond[block], d);
    second = lesser(second, larger(least, d));
    least = lesser(least, d);
    store(distances[n], d);
  }

  BestTwo result = smallestTwo(least, second);
  if (result.best > job.maxDistance || result.best == notMeasured) return {};
  if (result.second > job.maxDistance) result.second = notMeasured;
  findBest(job, count, result);
  return result;
}

CircleSearchLoop loopFor(std::size_t words) {
  switch (words) {
    case 2:
      return circleSearch<2>;
    case 4:
      return circleSearch<4>;
    case 8:
      return circleSearch<8>;
    default:
      return circleSearch<0>;
  }
}
