#include "views/SeenVoxels.h"

#include "output/Summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <map>
#include <tuple>

namespace mirel {

namespace {

constexpr double mostVoxelsAway = 1e5;  // sight lines are followed voxel by voxel

const std::array<std::vector<std::string>, 4> knownHeads = {
    {{"x", "x_m"}, {"y", "y_m"}, {"z", "z_m"}, {"pose", "pose_number"}}};

std::size_t columnOf(const CsvTable& table, const std::vector<std::string>& names) {
  for (std::size_t i = 0; i < table.columns(); ++i) {
    if (std::find(names.begin(), names.end(), table.heads()[i]) != names.end()) return i;
  }
  throw UsageError(
      fmt::format("{}: no column {}; heads x, y, z, pose expected, or --columns", table.headPlace(), names.front()));
}

std::array<std::size_t, 4> chooseColumns(const CsvTable& table, const std::string& list) {
  std::array<std::size_t, 4> columns{};
  if (!list.empty()) {
    const std::vector<std::string> parts = splitList(list);
    if (parts.size() != columns.size()) {
      throw UsageError(fmt::format("--columns: {} columns given, 4 expected: x, y, z, pose", parts.size()));
    }
    for (std::size_t i = 0; i < columns.size(); ++i) columns[i] = table.columnOf("--columns", parts[i]);
  } else if (!table.hasHeads()) {
    throw UsageError(table.name() + ": no heads; --columns expected, such as --columns 1,2,3,4 for x, y, z, pose");
  } else {
    for (std::size_t i = 0; i < columns.size(); ++i) columns[i] = columnOf(table, knownHeads[i]);
  }
  return columns;
}

int readPoseNumber(const CsvTable& table, std::size_t row, std::size_t column) {
  const double value = table.number(row, column);
  if (value == std::floor(value) && value >= INT_MIN && value <= INT_MAX) return static_cast<int>(value);
  throw table.errorAt(
      row, fmt::format("{}: {} given, the number of a pose expected", table.describe(column), table.cell(row, column)));
}

SeenVoxel seenVoxel(const Algorithms::VisibilityCheck::Grid& grid, const VoskBase::Vec3d<int>& key,
                    const Algorithms::VisibilityCheck::GridElement& e) {
  const Eigen::Vector3d centre = grid.centre(key);
  return {key, {centre[0], centre[1], centre[2]}, e.points.size(), e.rays.size(), e.firstPose, e.lastPose, e.score};
}

auto order(const SeenVoxel& v) { return std::tuple(-v.score, v.key.x, v.key.y, v.key.z); }

void checkVoxelSize(const SeenVoxels& result, const PosedPoints& points) {
  std::map<int, const NamedPose*> poseOf;
  for (const NamedPose& pose : result.poses) poseOf[pose.number] = &pose;
  const double most = mostVoxelsAway * result.voxelSize;
  for (const auto& [p, number] : points) {
    const cv::Point3d world = toWorld(poseOf.at(number)->pose, {p[0], p[1], p[2]});
    const double away = std::max({std::abs(world.x), std::abs(world.y), std::abs(world.z)});
    if (away <= most) continue;
    throw UsageError(fmt::format("--voxel: {:g} given, at least {:.3g} expected for points {:.4g} m from the origin",
                                 result.voxelSize, away / mostVoxelsAway, away));
  }
}

long long poseSpan(const SeenVoxels& result) {
  const auto [low, high] = std::minmax_element(result.poses.begin(), result.poses.end(),
                                               [](const auto& a, const auto& b) { return a.number < b.number; });
  return static_cast<long long>(high->number) - low->number;
}

std::size_t scored(const SeenVoxels& result) {
  return std::count_if(result.voxels.begin(), result.voxels.end(), [](const SeenVoxel& v) { return v.score > 0; });
}

std::string placeText(const SeenVoxel& v) {
  return fmt::format("({:.6g}, {:.6g}, {:.6g}) m", v.centre.x, v.centre.y, v.centre.z);
}

nlohmann::json voxelJson(const SeenVoxel& v) {
  return {{"key", {v.key.x, v.key.y, v.key.z}},
          {"centre_m", {v.centre.x, v.centre.y, v.centre.z}},
          {"points", v.points},
          {"rays", v.rays},
          {"first_pose", v.firstPose},
          {"last_pose", v.lastPose},
          {"score", v.score}};
}

ReportAnswer judge(const SeenVoxels& result) {
  if (result.regions.empty()) return {"No region has a score", Verdict::bad, "No result: " + whyNothing(result) + "."};
  const SeenVoxel& best = result.regions[0];
  return {fmt::format("Best seen: the voxel at {}", placeText(best)), Verdict::good,
          fmt::format("Score {}, from {} points and {} sight lines of poses {} to {}.", best.score, best.points,
                      best.rays, best.firstPose, best.lastPose)};
}

}  // namespace

PosedPoints readPosedPoints(const CsvTable& table, const std::string& columns, const std::vector<NamedPose>& poses,
                            const std::string& poseFileName) {
  const auto [x, y, z, pose] = chooseColumns(table, columns);
  std::map<int, bool> known;
  for (const NamedPose& p : poses) known[p.number] = true;
  PosedPoints points;
  points.reserve(table.rows());
  for (std::size_t row = 0; row < table.rows(); ++row) {
    const int number = readPoseNumber(table, row, pose);
    if (known.find(number) == known.end()) {
      throw table.errorAt(
          row, fmt::format("{}: {} has no pose with the number {}", table.describe(pose), poseFileName, number));
    }
    const auto coordinate = [&](std::size_t column) { return table.number(row, column, farthest); };
    points.emplace_back(Eigen::Vector3d(coordinate(x), coordinate(y), coordinate(z)), number);
  }
  return points;
}

void findSeenVoxels(SeenVoxels& result, const PosedPoints& points, int regions) {
  checkVoxelSize(result, points);
  result.points = points.size();
  std::map<int, Eigen::Matrix4d> poses;
  for (const NamedPose& pose : result.poses) poses[pose.number] = rowsInMemory(pose.pose);
  Algorithms::VisibilityCheck check(result.voxelSize);
  check.updateGrid(points, poses, result.sensors);
  const Algorithms::VisibilityCheck::Grid& grid = check.getGrid();
  for (const auto& [key, element] : grid.cells()) result.voxels.push_back(seenVoxel(grid, key, element));
  std::sort(result.voxels.begin(), result.voxels.end(),
            [](const SeenVoxel& a, const SeenVoxel& b) { return order(a) < order(b); });
  while (static_cast<int>(result.regions.size()) < regions) {
    const auto [inside, rays, firstPose, lastPose, score] = check.getCurrentMax();
    if (score == 0) return;
    const VoskBase::Vec3d<int> key = grid.key(inside.front());  // which looking for the maximum does not tell
    result.regions.push_back(seenVoxel(grid, key, grid.cells().at(key)));
    result.regions.back().score = score;
  }
}

nlohmann::json resultJson(const SeenVoxels& result) {
  nlohmann::json sensors = nlohmann::json::array(), regions = sensors;
  for (const Eigen::Vector3d& s : result.sensors) sensors.push_back({s[0], s[1], s[2]});
  for (const SeenVoxel& region : result.regions) regions.push_back(voxelJson(region));
  return {{"schema", 1},
          {"command", "visibility"},
          {"points_file", result.pointsFile},
          {"poses_file", result.posesFile},
          {"points", result.points},
          {"poses", result.poses.size()},
          {"pose_span", poseSpan(result)},
          {"voxel_m", result.voxelSize},
          {"sensors_m", sensors},
          {"voxels_kept", result.voxels.size()},
          {"voxels_scored", scored(result)},
          {"regions", regions}};
}

std::string whyNothing(const SeenVoxels& result) {
  if (!result.voxels.empty()) {
    return fmt::format("{} voxels were kept, but no sampled point lies on a sampled sight line", result.voxels.size());
  }
  return fmt::format(
      "no voxel has 10 points and 10 sight lines of poses whose numbers span 31; points in all: {}, numbers of all "
      "poses span {}",
      result.points, poseSpan(result));
}

Report seenReport(const SeenVoxels& result) {
  Report report = {.command = "mirel visibility",
                   .answer = judge(result),
                   .facts = {{"Points", fmt::format("{}", result.points), result.pointsFile},
                             {"Poses", fmt::format("{}", result.poses.size()),
                              fmt::format("numbers span {}; {}", poseSpan(result), result.posesFile)},
                             {"Voxels kept", fmt::format("{}", result.voxels.size()),
                              fmt::format("of {:g} m; {} with a score", result.voxelSize, scored(result))},
                             {"Sensor points", fmt::format("{}", result.sensors.size()), "per pose"}},
                   .pictures = {},
                   .charts = {},
                   .tables = {},
                   .result = resultJson(result),
                   .run = {}};
  if (result.regions.empty()) return report;
  const SeenVoxel& best = result.regions[0];
  report.facts.push_back({"Best score", fmt::format("{}", best.score), placeText(best)});
  report.facts.push_back({"Pose span", fmt::format("{}", static_cast<long long>(best.lastPose) - best.firstPose),
                          fmt::format("poses {} to {}", best.firstPose, best.lastPose)});
  ReportTable table{"Best regions: best voxels at least 1 m apart",
                    {"Region", "Score", "x, m", "y, m", "z, m", "Points", "Sight lines", "First pose", "Last pose"},
                    {}};
  for (std::size_t i = 0; i < result.regions.size(); ++i) {
    const SeenVoxel& v = result.regions[i];
    table.rows.push_back({fmt::format("{}", i + 1), fmt::format("{}", v.score), fmt::format("{:.6g}", v.centre.x),
                          fmt::format("{:.6g}", v.centre.y), fmt::format("{:.6g}", v.centre.z),
                          fmt::format("{}", v.points), fmt::format("{}", v.rays), fmt::format("{}", v.firstPose),
                          fmt::format("{}", v.lastPose)});
  }
  report.tables.push_back(table);
  return report;
}

std::string summaryText(const SeenVoxels& result) {
  std::string text = summaryLine("points", fmt::format("{}, {}", result.points, result.pointsFile)) +
                     summaryLine("poses", fmt::format("{}, numbers span {}, {}", result.poses.size(), poseSpan(result),
                                                      result.posesFile)) +
                     summaryLine("voxels", fmt::format("{} of {:g} m kept, {} with a score", result.voxels.size(),
                                                       result.voxelSize, scored(result)));
  for (std::size_t i = 0; i < result.regions.size(); ++i) {
    const SeenVoxel& v = result.regions[i];
    text += summaryLine(i == 0 ? "best voxel" : "next region",
                        fmt::format("score {} at {}, {} points, {} sight lines, poses {} to {}", v.score, placeText(v),
                                    v.points, v.rays, v.firstPose, v.lastPose));
  }
  return text;
}

}  // namespace mirel
