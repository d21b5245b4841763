/// The vertices around an edge.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace MirelAlgorithms {

/// Numbers distinct vertices in the order in which they come up: a hash table with open addressing that is emptied at
/// no cost.
class FanNeighbours {
 public:
  void clear() {
    vertices_.clear();
    if (++epoch_ == 0) places_.assign(places_.size(), Place{}), epoch_ = 1;
  }

  /// The vertices so far, by place.
  const std::vector<int>& vertices() const { return vertices_; }

  /// The place of a vertex; it is added if it is new.
  int place(int vertex) {
    std::size_t at = start(vertex);
    for (; places_[at].epoch == epoch_; at = (at + 1) & (places_.size() - 1))
      if (places_[at].vertex == vertex) return places_[at].number;
    const int number = static_cast<int>(vertices_.size());
    places_[at] = {epoch_, vertex, number};
    vertices_.push_back(vertex);
    if (2 * vertices_.size() > places_.size()) grow();
    return number;
  }

 private:
  struct Place {
    std::uint32_t epoch = 0;  // in use if it is the current one
    int vertex = 0, number = 0;
  };

  std::size_t start(int vertex) const {
    return (static_cast<std::uint32_t>(vertex) * 2654435769U >> 8) & (places_.size() - 1);
  }

  void grow() {
    const std::vector<int> vertices = std::move(vertices_);
    places_.assign(2 * places_.size(), Place{});
    vertices_.clear();
    for (const int vertex : vertices) place(vertex);
  }

  std::vector<Place> places_ = std::vector<Place>(64);
  std::vector<int> vertices_;
  std::uint32_t epoch_ = 1;
};

}  // namespace MirelAlgorithms
