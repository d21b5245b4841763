/// Fast lookup of the elements of a voxel grid.
#pragma once

#include <MirelAlgorithms/geometry/VisibilityCheck.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace MirelAlgorithms {

using VoxelKey = VoskBase::Vec3d<int>;
using VoxelElement = Algorithms::VisibilityCheck::GridElement;

/// A box of voxel keys, both ends included.
struct VoxelBox {
  VoxelKey least, most;

  bool contains(const VoxelKey& key) const {
    return least.x <= key.x && key.x <= most.x && least.y <= key.y && key.y <= most.y && least.z <= key.z &&
           key.z <= most.z;
  }
};

/// The elements of a grid by key: open addressing, and one bit per cell of the box around them in front of it where the
/// box is small enough, because most cells that a sight line asks for are empty.
class VoxelIndex {
 public:
  /// The grid must not be empty, and its elements must stay where they are.
  explicit VoxelIndex(Algorithms::VisibilityCheck::Cells& cells);

  /// The box around all elements.
  const VoxelBox& box() const { return box_; }

  /// Null where there is none. The key must lie in the box.
  VoxelElement* find(const VoxelKey& key) const;

 private:
  struct Slot {
    VoxelKey key;
    VoxelElement* element = nullptr;
  };

  void insert(const VoxelKey& key, VoxelElement& element);
  std::size_t slotOf(const VoxelKey& key) const;
  std::size_t cellOf(const VoxelKey& key) const;

  VoxelBox box_;
  std::size_t width_ = 0, height_ = 0;   // of the box, in cells
  std::vector<std::uint64_t> occupied_;  // by cell; empty for large boxes
  std::vector<Slot> slots_;              // a power of two of them
};

}  // namespace MirelAlgorithms
