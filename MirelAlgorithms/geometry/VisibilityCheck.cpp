#include <MirelAlgorithms/frame/internal/Log.h>
#include <MirelAlgorithms/frame/internal/Require.h>
#include <MirelAlgorithms/geometry/VisibilityCheck.h>
#include <MirelAlgorithms/geometry/internal/SeededRandom.h>
#include <MirelAlgorithms/geometry/internal/SightLine.h>
#include <MirelAlgorithms/geometry/internal/VoxelIndex.h>
#include <MirelAlgorithms/geometry/internal/VoxelScore.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <string>

#define VOXEL_LOG(...) \
  MIREL_LOG("VisibilityCheck.cpp", "Algorithms::VisibilityCheck::updateGrid", LogLevel::diagnostic, __VA_ARGS__)

namespace Algorithms {
namespace {

using namespace MirelAlgorithms;
using Vector = Eigen::Vector3d;
using Element = VisibilityCheck::GridElement;
using Pose = std::array<double, 16>;

namespace LogLevel = MirelAlgorithms::LogLevel;

constexpr const char* function = "updateGrid";
constexpr std::size_t leastRays = 10;
constexpr int leastPoints = 10, leastPoseSpan = 31;
constexpr double sampledPart = 0.1;

Vector transformed(const Vector& p, const Pose& m) {
  return {m[0] * p[0] + m[1] * p[1] + m[2] * p[2] + m[3], m[4] * p[0] + m[5] * p[1] + m[6] * p[2] + m[7],
          m[8] * p[0] + m[9] * p[1] + m[10] * p[2] + m[11]};
}

const Pose& poseOf(const std::map<int, Pose>& poses, int number) {
  const auto found = poses.find(number);
  if (found == poses.end()) throw std::out_of_range("invalid map<K, T> key");
  return found->second;
}

void widen(Element& element, int pose) {
  element.firstPose = std::min(element.firstPose, pose);
  element.lastPose = std::max(element.lastPose, pose);
}

SeenScene sceneOf(const VisibilityCheck::Points& points, const std::map<int, Pose>& poses,
                  const std::vector<Vector>& sensorPoints) {
  struct Known {
    const Pose* pose;
    int index;
  };
  SeenScene scene;
  std::unordered_map<int, Known> known;
  scene.points.reserve(points.size());
  scene.poseOfPoint.reserve(points.size());
  for (const auto& [position, number] : points) {
    auto found = known.find(number);
    if (found == known.end()) {
      const Pose& pose = poseOf(poses, number);
      found = known.emplace(number, Known{&pose, static_cast<int>(scene.sensors.size())}).first;
      auto& sensors = scene.sensors.emplace_back();
      for (const Vector& sensor : sensorPoints) sensors.push_back(transformed(sensor, pose));
    }
    scene.points.push_back(transformed(position, *found->second.pose));
    scene.poseOfPoint.push_back(found->second.index);
  }
  return scene;
}

void requireFinite(const char* argument, const std::vector<Vector>& points) {
  for (const Vector& p : points)
    if (!p.allFinite()) refuse(function, argument, "a number that is not finite", "finite numbers");
}

double largestCoordinate(const std::vector<Vector>& points) {
  double largest = 0.0;
  for (const Vector& p : points) largest = std::max(largest, p.lpNorm<Eigen::Infinity>());
  return largest;
}

// Keys of points fit an int, and so do those of the next voxel.
void requireNear(const std::vector<Vector>& points, double voxelSize) {
  constexpr double mostCells = 2147483647.0;
  for (const Vector& p : points)
    if (!((p / voxelSize).array().abs() < mostCells).all())
      refuse(function, "points", "one at 2^31 voxels or more from the origin", "nearer points or larger voxels");
}

SeenScene checkedScene(const VisibilityCheck::Points& points, const std::map<int, Pose>& poses,
                       const std::vector<Vector>& sensorPoints, double voxelSize) {
  constexpr std::size_t mostPoints = 2147483647;
  if (points.size() > mostPoints) refuse(function, "points", std::to_string(points.size()), "fewer than 2^31");
  if (!std::isfinite(voxelSize)) refuse(function, "voxel size", "infinity", "a finite number");
  SeenScene scene = sceneOf(points, poses, sensorPoints);
  if (!points.empty() && (sensorPoints.size() == 1 || sensorPoints.size() == 2))
    refuse(function, "sensorPoints", std::to_string(sensorPoints.size()), "none, or at least 3");
  requireFinite("points in the world", scene.points);
  for (const auto& sensors : scene.sensors) requireFinite("sensorPoints in the world", sensors);
  requireNear(scene.points, voxelSize);
  scene.extent = largestCoordinate(scene.points);
  for (const auto& sensors : scene.sensors) scene.extent = std::max(scene.extent, largestCoordinate(sensors));
  return scene;
}

std::vector<VoxelKey> keysOf(const VisibilityCheck::Cells& cells) {
  std::vector<VoxelKey> keys;
  keys.reserve(cells.size());
  for (const auto& [key, element] : cells) keys.push_back(key);
  return keys;
}

std::vector<VoxelKey> keysOf(const VisibilityCheck::Grid& grid, const std::vector<Vector>& points) {
  std::vector<VoxelKey> keys;
  keys.reserve(points.size());
  for (const Vector& p : points) keys.push_back(grid.key(p));
  return keys;
}

// Makes the voxels of all points, each of which counts its points in its score; gives the voxel of every point.
std::vector<Element*> makeVoxels(VisibilityCheck::Cells& cells, const std::vector<VoxelKey>& keys,
                                 const VisibilityCheck::Points& points) {
  std::vector<Element*> voxels;
  if (keys.empty()) return voxels;
  voxels.reserve(keys.size());
  VoxelIndex index(boxAround(keys), keys.size());
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const int pose = points[i].second;
    Element*& voxel = index.at(keys[i]);
    if (!voxel) {
      voxel = &cells.try_emplace(keys[i]).first->second;
      voxel->firstPose = voxel->lastPose = pose;
    }
    ++voxel->score;
    widen(*voxel, pose);
    voxels.push_back(voxel);
  }
  return voxels;
}

// Removes voxels of too few points, and lists the points of the others.
void keepSupportedVoxels(VisibilityCheck::Cells& cells, std::vector<Element*>& voxels) {
  for (Element*& voxel : voxels)
    if (voxel->score < leastPoints) voxel = nullptr;
  std::erase_if(cells, [](const auto& cell) { return cell.second.score < leastPoints; });
  for (auto& [key, element] : cells) {
    element.points.reserve(static_cast<std::size_t>(element.score));
    element.score = 0;
  }
  for (std::size_t i = 0; i < voxels.size(); ++i)
    if (voxels[i]) voxels[i]->points.push_back(static_cast<int>(i));
}

void collectRays(VisibilityCheck::Grid& grid, double voxelSize, const SeenScene& scene,
                 const std::vector<VoxelKey>& keys, const VisibilityCheck::Points& points) {
  if (grid.cells().empty()) return;
  VoxelIndex index(boxAround(keysOf(grid.cells())), grid.cells().size());
  for (auto& [key, element] : grid.cells()) index.at(key) = &element;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const int point = static_cast<int>(i), pose = points[i].second;
    for (const Vector& sensor : scene.sensors[static_cast<std::size_t>(scene.poseOfPoint[i])])
      walkSightLine(grid, voxelSize, index.box(), keys[i], scene.points[i], sensor, [&](const VoxelKey& crossed) {
        Element* const element = index.find(crossed);
        if (!element) return;
        if (element->rays.empty() || element->rays.back() != point) element->rays.push_back(point);
        widen(*element, pose);
      });
  }
}

// Members of a list as the random numbers from `number` on choose them, with replacement.
std::vector<int> drawFrom(const std::vector<int>& list, std::size_t count, const int* number) {
  std::vector<int> drawn(count);
  for (int& member : drawn) member = list[static_cast<std::size_t>(*number++) % list.size()];
  return drawn;
}

std::size_t sampleSize(const std::vector<int>& list) {
  return static_cast<std::size_t>(std::floor(sampledPart * static_cast<double>(list.size())));
}

void scoreVoxels(VisibilityCheck::Grid& grid, const SeenScene& scene) {
  std::vector<int> random;
  for (auto& [key, element] : grid.cells()) {
    const std::size_t points = sampleSize(element.points), rays = sampleSize(element.rays);
    extendSeededRandom(random, points + rays);
    element.score = voxelScore(scene, drawFrom(element.points, points, random.data()),
                               drawFrom(element.rays, rays, random.data() + points));
  }
}

}  // namespace

VisibilityCheck::VisibilityCheck(double voxelSize) : voxelSize_(voxelSize) {}
VisibilityCheck::VisibilityCheck(const VisibilityCheck& other) = default;
VisibilityCheck::VisibilityCheck(VisibilityCheck&& other) noexcept = default;
VisibilityCheck& VisibilityCheck::operator=(const VisibilityCheck& other) = default;
VisibilityCheck& VisibilityCheck::operator=(VisibilityCheck&& other) noexcept = default;
VisibilityCheck::~VisibilityCheck() = default;

void VisibilityCheck::update(Points points, std::map<int, Elements> poses, std::vector<Vector> sensorPoints) {
  const MirelCore::FunctionTimer timer("update voxel grid");
  const bool ownSize = voxelSize_ > 0.0;
  const SeenScene scene = checkedScene(points, poses, sensorPoints, ownSize ? voxelSize_ : Grid().cellSize());
  points_ = std::move(points);
  poses_ = std::move(poses);
  grid_.cells().clear();
  grid_.setOrigin(Vector(0.0, 0.0, 0.0));
  if (ownSize) grid_.setCellSize(voxelSize_);

  const std::vector<VoxelKey> keys = keysOf(grid_, scene.points);
  std::vector<Element*> voxels = makeVoxels(grid_.cells(), keys, points_);
  VOXEL_LOG(L"First Loop Sucessful");

  const auto size = [this] { return static_cast<int>(grid_.cells().size()); };
  VOXEL_LOG(L"First deleting loop: size before %i", size());
  keepSupportedVoxels(grid_.cells(), voxels);
  VOXEL_LOG(L"size after %i", size());

  collectRays(grid_, voxelSize_, scene, keys, points_);
  VOXEL_LOG(L"Second Loop Sucessful");

  VOXEL_LOG(L"Size before deleting Loop %i", size());
  std::erase_if(grid_.cells(), [](const auto& cell) {
    const Element& element = cell.second;
    return static_cast<long long>(element.lastPose) - element.firstPose < leastPoseSpan ||
           element.rays.size() < leastRays;
  });
  VOXEL_LOG(L"Deleting voxels between the loop Sucessful");
  VOXEL_LOG(L"Size after Loop %i", size());

  scoreVoxels(grid_, scene);
  VOXEL_LOG(L"Final Grid size %i", size());
}

std::vector<Vector> VisibilityCheck::inWorld(const std::vector<int>& indices) const {
  std::vector<Vector> world;
  world.reserve(indices.size());
  for (const int index : indices) {
    const auto& [position, number] = points_[static_cast<std::size_t>(index)];
    world.push_back(transformed(position, poseOf(poses_, number)));
  }
  return world;
}

std::tuple<std::vector<Vector>, std::vector<Vector>, int, int, int> VisibilityCheck::getCurrentMax() {
  const Cells::value_type* best = nullptr;
  int bestScore = 0;
  for (const auto& cell : grid_.cells())
    if (cell.second.score > bestScore) {
      bestScore = cell.second.score;
      best = &cell;
    }
  if (!best) return {};

  const Vector centre = grid_.centre(best->first);
  std::tuple result(inWorld(best->second.points), inWorld(best->second.rays), best->second.firstPose,
                    best->second.lastPose, bestScore);
  constexpr double region = 1.0;
  for (auto& [key, element] : grid_.cells())
    if ((grid_.centre(key) - centre).norm() < region) element.score = 0;
  return result;
}

}  // namespace Algorithms
