#include <MirelAlgorithms/geometry/internal/VoxelIndex.h>

#include <algorithm>
#include <bit>

namespace MirelAlgorithms {
namespace {

constexpr double mostCells = 1 << 28;  // 32 MiB of bits

VoxelBox boxAround(const Algorithms::VisibilityCheck::Cells& cells) {
  VoxelBox box{cells.begin()->first, cells.begin()->first};
  for (const auto& [key, element] : cells) {
    box.least = {std::min(box.least.x, key.x), std::min(box.least.y, key.y), std::min(box.least.z, key.z)};
    box.most = {std::max(box.most.x, key.x), std::max(box.most.y, key.y), std::max(box.most.z, key.z)};
  }
  return box;
}

}  // namespace

VoxelIndex::VoxelIndex(Algorithms::VisibilityCheck::Cells& cells)
    : box_(boxAround(cells)),
      width_(offset(box_.least.x, box_.most.x) + 1),
      height_(offset(box_.least.y, box_.most.y) + 1) {
  const std::size_t depth = offset(box_.least.z, box_.most.z) + 1;
  if (static_cast<double>(width_) * static_cast<double>(height_) * static_cast<double>(depth) <= mostCells)
    occupied_.resize((width_ * height_ * depth + wordBits - 1) / wordBits);
  slots_.resize(std::bit_ceil(2 * cells.size()));
  for (auto& [key, element] : cells) insert(key, element);
}

std::size_t VoxelIndex::slotOf(const VoxelKey& key) const {
  // Odd factors spread neighbouring keys over the high bits (Knuth, "The Art of Computer Programming" 3, 6.4).
  std::uint64_t hash = static_cast<std::uint32_t>(key.x) * 0x9e3779b97f4a7c15u;
  hash ^= static_cast<std::uint32_t>(key.y) * 0xc2b2ae3d27d4eb4fu;
  hash ^= static_cast<std::uint32_t>(key.z) * 0x165667b19e3779f9u;
  return (hash ^ hash >> 32) & (slots_.size() - 1);
}

void VoxelIndex::insert(const VoxelKey& key, VoxelElement& element) {
  if (!occupied_.empty()) occupied_[cellOf(key) / wordBits] |= std::uint64_t{1} << cellOf(key) % wordBits;
  std::size_t slot = slotOf(key);
  while (slots_[slot].element) slot = (slot + 1) & (slots_.size() - 1);
  slots_[slot] = {key, &element};
}

VoxelElement* VoxelIndex::findSlot(const VoxelKey& key) const {
  for (std::size_t slot = slotOf(key);; slot = (slot + 1) & (slots_.size() - 1))
    if (!slots_[slot].element || slots_[slot].key == key) return slots_[slot].element;
}

}  // namespace MirelAlgorithms
