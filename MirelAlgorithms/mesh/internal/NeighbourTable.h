/// Values per neighbour of the vertex at hand.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace MirelAlgorithms {

/// Neighbours come up once for each triangle that has them; what is computed for one is kept for the next time. Two
/// that fall on one place push each other out, and are computed again.
template <class Value>
class NeighbourTable {
 public:
  /// Forgets everything.
  void clear() { ++epoch_; }

  template <class Compute>
  Value of(int vertex, const Compute& compute) {
    Entry& entry = entries_[(static_cast<std::uint32_t>(vertex) * 2654435769U) >> (32 - bits)];
    if (entry.vertex != vertex || entry.epoch != epoch_) entry = {epoch_, vertex, compute(vertex)};
    return entry.value;
  }

 private:
  static constexpr int bits = 6;

  struct Entry {
    std::uint64_t epoch = 0;
    int vertex = -1;
    Value value;
  };

  std::uint64_t epoch_ = 0;
  std::array<Entry, std::size_t{1} << bits> entries_;
};

}  // namespace MirelAlgorithms
