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
};

/// The smallest box around keys, of which there is at least one.
VoxelBox boxAround(const std::vector<VoxelKey>& keys);

/// Elements of a grid by key: a table of all cells of a box, or open addressing where the box is large.
class VoxelIndex {
 public:
  /// Room for keys in a box, for at most so many different ones.
  VoxelIndex(const VoxelBox& box, std::size_t mostKeys);

  const VoxelBox& box() const { return box_; }

  /// The element of a key, to be set; null at first. The key must lie in the box.
  VoxelElement*& at(const VoxelKey& key) { return table_.empty() ? slotOf(key).element : table_[cellOf(key)]; }

  /// Null where none was set. The key must lie in the box.
  VoxelElement* find(const VoxelKey& key) const {
    return table_.empty() ? slots_[positionOf(key)].element : table_[cellOf(key)];
  }

 private:
  struct Slot {
    VoxelKey key;
    VoxelElement* element = nullptr;
  };

  static std::size_t offset(int least, int at) {
    return static_cast<std::size_t>(static_cast<std::int64_t>(at) - least);
  }
  std::size_t cellOf(const VoxelKey& key) const {
    return (offset(box_.least.z, key.z) * height_ + offset(box_.least.y, key.y)) * width_ + offset(box_.least.x, key.x);
  }

  // Where a key is, or where it belongs.
  std::size_t positionOf(const VoxelKey& key) const;
  Slot& slotOf(const VoxelKey& key);

  VoxelBox box_;
  std::size_t width_ = 0, height_ = 0;  // of the box, in cells
  std::vector<VoxelElement*> table_;    // by cell; empty for large boxes
  std::vector<Slot> slots_;             // for large boxes; a power of two of them
};

}  // namespace MirelAlgorithms
