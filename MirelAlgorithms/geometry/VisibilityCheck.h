/// What a scanner has seen, and from where: a sparse voxel grid with scores.
///
///     Algorithms::VisibilityCheck check(0.25);
///     check.updateGrid(points, poses, sensorPoints);
///     const auto [seen, seenBy, firstPose, lastPose, score] = check.getCurrentMax();
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/Host.h>

#include <Eigen/Core>
#include <array>
#include <map>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Algorithms {

/// Scores the voxels of a scanned scene by how often their points lie on sight lines between other points and the
/// sensor.
///
/// Coordinates are in the unit of the poses. A pose is an `Eigen::Matrix4d` whose elements in memory, m0 to m15, take a
/// point p of its frame to the world as
///
///     (m0 p0 + m1 p1 + m2 p2 + m3,  m4 p0 + m5 p1 + m6 p2 + m7,  m8 p0 + m9 p1 + m10 p2 + m11)
///
/// An object is used by one thread at a time; different objects do not disturb each other. Results are the same for any
/// number of threads. The caller may be compiled for any instruction set: no Eigen type whose layout depends on it
/// crosses the library's border.
class VisibilityCheck {
 public:
  /// What is known of a voxel.
  struct GridElement {
    std::vector<int> points;  ///< indices of the points inside
    std::vector<int> rays;    ///< indices of the points whose sight lines towards a sensor point cross it
    int firstPose = 0;        ///< smallest pose number among both
    int lastPose = 0;         ///< largest
    int score = 0;            ///< how often its points lie on sight lines of others; higher: seen better
  };

  /// Voxels by integer coordinates.
  using Cells = std::unordered_map<VoskBase::Vec3d<int>, GridElement>;
  /// The voxels with their side and the corner of voxel (0, 0, 0).
  using Grid = Brel::VoxelGrid<GridElement, Eigen::Vector3d, Cells>;
  using Points = std::vector<std::pair<Eigen::Vector3d, int>>;  ///< each in the frame of the pose with this number

  /// An empty grid.
  ///
  /// @param voxelSize  side of a voxel. When it is not above 0, voxels have sides of 0.25 and sight lines end in the
  ///                   voxel they start from
  MIREL_API explicit VisibilityCheck(double voxelSize);

  /// Copies are independent; what was moved from may only be assigned to and destroyed. @{
  MIREL_API VisibilityCheck(const VisibilityCheck& other);
  MIREL_API VisibilityCheck(VisibilityCheck&& other) noexcept;
  MIREL_API VisibilityCheck& operator=(const VisibilityCheck& other);
  MIREL_API VisibilityCheck& operator=(VisibilityCheck&& other) noexcept;
  /// @}

  MIREL_API ~VisibilityCheck();

  /// Builds the grid anew.
  ///
  /// Points are put into voxels and voxels of fewer than 10 points removed. From every point, also from those of
  /// removed voxels, a sight line is drawn towards every sensor point and noted in the voxels that it crosses
  /// (Amanatides and Woo, "A fast voxel traversal algorithm for ray tracing", Eurographics 1987). Voxels with fewer
  /// than 10 sight lines, or seen only from poses whose numbers span less than 31, are removed. The rest is scored on a
  /// tenth of its points and sight lines, drawn from the C library's sequence of random numbers for seed 1; the
  /// caller's own sequence goes on undisturbed where the platform allows it (glibc).
  ///
  /// @param points        position and number of the pose whose frame it is in
  /// @param poses         poses by number
  /// @param sensorPoints  in the frame of every pose, for example the centres of the sensors; none, or at least three
  ///
  /// Refused before anything changes: a pose number that `poses` does not have (`std::out_of_range`, "invalid map<K, T>
  /// key"); and by `std::invalid_argument` one or two sensor points, points and sensor points that are not finite in
  /// the world, points that lie 2^31 voxels or more from the origin, and an infinite voxel size.
  ///
  /// Time grows with the points and with the length of the sight lines in voxels inside the box of what is left.
  void updateGrid(Points points, std::map<int, Eigen::Matrix4d> poses, std::vector<Eigen::Vector3d> sensorPoints) {
    std::map<int, Elements> elements;
    for (const auto& [number, pose] : poses) {
      Elements& m = elements[number];
      for (int i = 0; i < 16; ++i) m[static_cast<std::size_t>(i)] = pose.data()[i];
    }
    update(std::move(points), std::move(elements), std::move(sensorPoints));
  }

  /// The voxel of the highest score: its points and the points of its sight lines in the world, its first and last pose
  /// and its score. Empty and 0 when no voxel has a score. The scores of voxels whose centres are less than 1 away from
  /// its centre become 0, so that the next call gives another region.
  MIREL_API std::tuple<std::vector<Eigen::Vector3d>, std::vector<Eigen::Vector3d>, int, int, int> getCurrentMax();

  /// All voxels.
  const Grid& getGrid() const { return grid_; }

 private:
  using Elements = std::array<double, 16>;  // of a pose, in memory order

  MIREL_API void update(Points points, std::map<int, Elements> poses, std::vector<Eigen::Vector3d> sensorPoints);
  std::vector<Eigen::Vector3d> inWorld(const std::vector<int>& indices) const;

  Grid grid_;
  double voxelSize_;
  Points points_;
  std::map<int, Elements> poses_;
};

}  // namespace Algorithms
