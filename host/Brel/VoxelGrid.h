/// Sparse voxels.
#pragma once

#include <cmath>

namespace Brel {

/// Elements by the integer key of their cell.
///
/// @tparam Element  what a cell holds
/// @tparam Point    three doubles by operator[]
/// @tparam Map      map from a key, constructible from three ints, to an element
template <class Element, class Point, class Map>
class VoxelGrid {
 public:
  /// Integer coordinates of a cell.
  using Key = typename Map::key_type;

  /// No cells; sides of 0.25.
  VoxelGrid() = default;
  VoxelGrid(const VoxelGrid&) = default;
  VoxelGrid(VoxelGrid&&) noexcept = default;
  VoxelGrid& operator=(const VoxelGrid&) = default;
  VoxelGrid& operator=(VoxelGrid&&) noexcept = default;
  virtual ~VoxelGrid() = default;

  /// The cells that are there, by key. @{
  const Map& cells() const { return cells_; }
  Map& cells() { return cells_; }
  /// @}

  /// Side of a cell, in the unit of the points. @{
  double cellSize() const { return cellSize_; }
  void setCellSize(double size) { cellSize_ = size; }
  /// @}

  /// Corner of the cell (0, 0, 0). @{
  const Point& origin() const { return origin_; }
  void setOrigin(const Point& origin) { origin_ = origin; }
  /// @}

  /// Key of the cell of a point: floor((point - origin) / cell size) on each axis, which has to fit an int.
  Key key(const Point& point) const { return Key(key(point, 0), key(point, 1), key(point, 2)); }

  /// One component of a key.
  int key(const Point& point, int axis) const {
    return static_cast<int>(std::floor((point[axis] - origin_[axis]) / cellSize_));
  }

  /// Centre of a cell.
  Point centre(const Key& key) const {
    return Point((key.x + 0.5) * cellSize_ + origin_[0], (key.y + 0.5) * cellSize_ + origin_[1],
                 (key.z + 0.5) * cellSize_ + origin_[2]);
  }

 private:
  Map cells_;
  double cellSize_ = 0.25;
  Point origin_ = Point(0.0, 0.0, 0.0);
};

}  // namespace Brel
