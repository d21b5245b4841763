/// A scanner that walks once around a table and sees marks on it, on a box and on a ball: each mark from all the poses
/// that face it. Cameras look along -z with y up; the world's z axis points up; metres.
#include "demo/DemoData.h"
#include "demo/Noise.h"
#include "output/JsonText.h"

#include <fmt/format.h>

#include <cmath>

namespace mirel {

namespace {

constexpr int poses = 64;
const cv::Vec3d middle(0.8, 0.5, 0.75);  // of the table's top

struct Pose {
  cv::Vec3d x, y, z, position;

  Pose(const cv::Vec3d& from, const cv::Vec3d& target) : z(cv::normalize(from - target)), position(from) {
    x = cv::normalize(cv::Vec3d(0, 0, 1).cross(z));
    y = z.cross(x);
  }

  cv::Vec3d toCamera(const cv::Vec3d& point) const {
    const cv::Vec3d d = point - position;
    return {d.dot(x), d.dot(y), d.dot(z)};
  }

  nlohmann::json matrix() const {
    nlohmann::json list = nlohmann::json::array();
    for (const cv::Vec3d& column : {x, y, z, position}) {
      for (int i = 0; i < 3; ++i) list.push_back(std::round(column[i] * 1e9) / 1e9);
      list.push_back(list.size() < 15 ? 0 : 1);
    }
    return list;
  }
};

struct Mark {
  cv::Vec3d position, normal;
};

std::vector<Mark> marks(Noise& noise) {
  std::vector<Mark> list;
  for (int i = 0; i < 70; ++i) {  // the table
    const double x = noise.uniform(-0.8, 0.8);
    list.push_back({middle + cv::Vec3d(x, noise.uniform(-0.5, 0.5), 0), {0, 0, 1}});
  }
  for (int i = 0; i < 90; ++i) {  // the sides of a box
    const cv::Vec3d normal(i % 4 == 0 ? 1 : i % 4 == 1 ? -1 : 0, i % 4 == 2 ? 1 : i % 4 == 3 ? -1 : 0, 0);
    const cv::Vec3d along(normal[1], normal[0], 0);
    const cv::Vec3d spot = 0.15 * normal + noise.uniform(-0.15, 0.15) * along;
    list.push_back({middle + spot + cv::Vec3d(-0.45, 0.1, noise.uniform(0, 0.25)), normal});
  }
  for (int i = 0; i < 80; ++i) {  // a ball
    const double z = noise.uniform(-0.3, 1), angle = noise.uniform(0, 2 * CV_PI), ring = std::sqrt(1 - z * z);
    const cv::Vec3d normal(ring * std::cos(angle), ring * std::sin(angle), z);
    list.push_back({middle + cv::Vec3d(0.35, -0.1, 0.14) + 0.14 * normal, normal});
  }
  return list;
}

std::vector<Pose> walk(Noise& noise) {
  std::vector<Pose> way;
  for (int i = 0; i < poses; ++i) {
    const double angle = 2 * CV_PI * i / poses, radius = 1.5 + 0.15 * std::sin(3 * angle);
    const cv::Vec3d from(1.2 * radius * std::cos(angle), radius * std::sin(angle), 0.75 + 0.25 * std::sin(2 * angle));
    const cv::Vec3d aim(noise.normal(0.06), noise.normal(0.06), noise.normal(0.06));
    way.emplace_back(middle + from, middle + aim);
  }
  return way;
}

bool isSeen(const Pose& pose, const Mark& mark) {
  constexpr double halfView = 30 * CV_PI / 180;
  const cv::Vec3d p = pose.toCamera(mark.position);
  const bool facing = cv::normalize(pose.position - mark.position).dot(mark.normal) > 0.15;
  return facing && std::hypot(p[0], p[1]) < -p[2] * std::tan(halfView);
}

/// Noise is larger along the line of sight.
cv::Vec3d measured(const Pose& pose, const Mark& mark, Noise& noise) {
  const cv::Vec3d p = pose.toCamera(mark.position) * (1 + noise.normal(0.001));
  return p + cv::Vec3d(noise.normal(0.0004), noise.normal(0.0004), noise.normal(0.0004));
}

std::string pointTable(const std::vector<Pose>& way, const std::vector<Mark>& things, Noise& noise) {
  std::string text = "x_m,y_m,z_m,pose\n";
  for (std::size_t i = 0; i < way.size(); ++i) {
    for (const Mark& mark : things) {
      if (!isSeen(way[i], mark)) continue;
      const cv::Vec3d p = measured(way[i], mark, noise);
      text += fmt::format("{:.6f},{:.6f},{:.6f},{}\n", p[0], p[1], p[2], i);
    }
  }
  return text;
}

std::string poseFile(const std::vector<std::pair<std::string, Pose>>& named) {
  nlohmann::json list = nlohmann::json::array();
  for (const auto& [name, pose] : named) list.push_back({{"name", name}, {"matrix", pose.matrix()}});
  return jsonText({{"schema", 1}, {"poses", list}});
}

}  // namespace

void writeScan(OutputFolder& folder) {
  Noise noise(7);
  const std::vector<Mark> things = marks(noise);
  const std::vector<Pose> way = walk(noise);
  std::vector<std::pair<std::string, Pose>> all, some;
  for (int i = 0; i < poses; ++i) all.emplace_back(fmt::format("{}", i), way[i]);
  for (int i = 0; i < 7; ++i) some.emplace_back(fmt::format("table {}", i), way[i * poses / 7]);
  some.emplace_back("shelf left", Pose({4.2, -0.4, 1.4}, {5.4, -0.6, 1.2}));
  some.emplace_back("shelf right", Pose({4.2, 0.8, 1.4}, {5.4, 1.0, 1.2}));
  folder.write("poses.json", poseFile(all));
  folder.write("views.json", poseFile(some));
  folder.write("scan.csv", pointTable(way, things, noise));
}

}  // namespace mirel
