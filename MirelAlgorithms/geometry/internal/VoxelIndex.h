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

/// The elements of a grid by key: open addressing, and one bit per cell of the box around them in front of it where the
/// box is small enough, because most cells that a sight line asks for are empty.
class VoxelIndex {
 public:
  /// The grid must not be empty, and its elements must stay where they are.
  explicit VoxelIndex(Algorithms::VisibilityCheck::Cells& cells);

  /// The box around all elements.
  const VoxelBox& box() const { return box_; }

  /// Null where there is none. The key must lie in the box.
  VoxelElement* find(const VoxelKey& key) const {
    if (!occupied_.empty() && !(occupied_[cellOf(key) / wordBits] >> cellOf(key) % wordBits & 1)) return nullptr;
    return findSlot(key);
  }

 private:
  struct Slot {
    VoxelKey key;
    VoxelElement* element = nullptr;
  };

  static constexpr std::size_t wordBits = 64;

  static std::size_t offset(int least, int at) {
    return static_cast<std::size_t>(static_cast<std::int64_t>(at) - least);
  }
  std::size_t cellOf(const VoxelKey& key) const {
    return (offset(box_.least.z, key.z) * height_ + offset(box_.least.y, key.y)) * width_ + offset(box_.least.x, key.x);
  }

  VoxelElement* findSlot(const VoxelKey& key) const;
  void insert(const VoxelKey& key, VoxelElement& element);
  std::size_t slotOf(const VoxelKey& key) const;

  VoxelBox box_;
  std::size_t width_ = 0, height_ = 0;   // of the box, in cells
  std::vector<std::uint64_t> occupied_;  // by cell; empty for large boxes
  std::vector<Slot> slots_;              // a power of two of them
};

}  // namespace MirelAlgorithms
