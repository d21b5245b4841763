#include <MirelAlgorithms/geometry/internal/VoxelIndex.h>

#include <algorithm>
#include <bit>

namespace MirelAlgorithms {
namespace {

constexpr double mostCells = 1 << 23;  // 64 MiB of pointers

}  // namespace

VoxelBox boxAround(const std::vector<VoxelKey>& keys) {
  VoxelBox box{keys.front(), keys.front()};
  for (const VoxelKey& key : keys) {
    box.least = {std::min(box.least.x, key.x), std::min(box.least.y, key.y), std::min(box.least.z, key.z)};
    box.most = {std::max(box.most.x, key.x), std::max(box.most.y, key.y), std::max(box.most.z, key.z)};
  }
  return box;
}

VoxelIndex::VoxelIndex(const VoxelBox& box, std::size_t mostKeys)
    : box_(box), width_(offset(box_.least.x, box_.most.x) + 1), height_(offset(box_.least.y, box_.most.y) + 1) {
  const std::size_t depth = offset(box_.least.z, box_.most.z) + 1;
  if (static_cast<double>(width_) * static_cast<double>(height_) * static_cast<double>(depth) <= mostCells)
    table_.resize(width_ * height_ * depth);
  else
    slots_.resize(std::bit_ceil(2 * mostKeys));
}

std::size_t VoxelIndex::positionOf(const VoxelKey& key) const {
  // Odd factors spread neighbouring keys over the high bits (Knuth, "The Art of Computer Programming" 3, 6.4).
  std::uint64_t hash = static_cast<std::uint32_t>(key.x) * 0x9e3779b97f4a7c15u;
  hash ^= static_cast<std::uint32_t>(key.y) * 0xc2b2ae3d27d4eb4fu;
  hash ^= static_cast<std::uint32_t>(key.z) * 0x165667b19e3779f9u;
  std::size_t position = (hash ^ hash >> 32) & (slots_.size() - 1);
  while (slots_[position].element && slots_[position].key != key) position = (position + 1) & (slots_.size() - 1);
  return position;
}

VoxelIndex::Slot& VoxelIndex::slotOf(const VoxelKey& key) {
  Slot& slot = slots_[positionOf(key)];
  slot.key = key;
  return slot;
}

}  // namespace MirelAlgorithms
