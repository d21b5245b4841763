/// The visibility grid step by step, without any shortcut.
#pragma once

#include <MirelAlgorithms/geometry/VisibilityCheck.h>

#include <cmath>
#include <cstdlib>

class LiteralGrid {
 public:
  using Vector = Eigen::Vector3d;
  using Key = VoskBase::Vec3d<int>;
  using Element = Algorithms::VisibilityCheck::GridElement;
  using Points = std::vector<std::pair<Vector, int>>;
  using Result = std::tuple<std::vector<Vector>, std::vector<Vector>, int, int, int>;

  explicit LiteralGrid(double size) : size_(size) {}

  void updateGrid(const Points& points, const std::map<int, Eigen::Matrix4d>& poses,
                  const std::vector<Vector>& sensors) {
    points_ = points;
    poses_ = poses;
    cells.clear();
    if (size_ > 0) cellSize_ = size_;
    for (int i = 0; i < static_cast<int>(points.size()); ++i) addPoint(i);
    eraseIf([](const Element& e) { return e.points.size() < 10; });
    for (int i = 0; i < static_cast<int>(points.size()); ++i)
      for (const Vector& sensor : sensors) addRay(i, world(sensor, poseOf(i)));
    eraseIf([](const Element& e) { return e.lastPose - e.firstPose < 31 || e.rays.size() < 10; });
    for (auto& [key, element] : cells) score(element, sensors);
  }

  Result getCurrentMax() {
    int best = 0;
    Key winner;
    for (const auto& [key, element] : cells)
      if (element.score > best) {
        best = element.score;
        winner = key;
      }
    if (best == 0) return {};
    const Element& element = cells.at(winner);
    Result result{{}, {}, element.firstPose, element.lastPose, element.score};
    for (auto& [key, other] : cells)
      if ((centre(key) - centre(winner)).norm() < 1.0) other.score = 0;
    for (const int i : element.points) std::get<0>(result).push_back(inWorld(i));
    for (const int i : element.rays) std::get<1>(result).push_back(inWorld(i));
    return result;
  }

  std::unordered_map<Key, Element> cells;

 private:
  static Vector world(const Vector& p, const Eigen::Matrix4d& pose) {
    const double* m = pose.data();
    return {m[0] * p[0] + m[1] * p[1] + m[2] * p[2] + m[3], m[4] * p[0] + m[5] * p[1] + m[6] * p[2] + m[7],
            m[8] * p[0] + m[9] * p[1] + m[10] * p[2] + m[11]};
  }
  const std::pair<Vector, int>& at(int i) const { return points_[static_cast<std::size_t>(i)]; }
  const Eigen::Matrix4d& poseOf(int i) const { return poses_.at(at(i).second); }
  Vector inWorld(int i) const { return world(at(i).first, poseOf(i)); }
  Key key(const Vector& p) const {
    const auto cell = [&](int axis) { return static_cast<int>(std::floor((p[axis] - 0.0) / cellSize_)); };
    return {cell(0), cell(1), cell(2)};
  }
  Vector centre(const Key& k) const {
    return {(k.x + 0.5) * cellSize_ + 0.0, (k.y + 0.5) * cellSize_ + 0.0, (k.z + 0.5) * cellSize_ + 0.0};
  }

  void addPoint(int i) {
    const int pose = at(i).second;
    const Key k = key(inWorld(i));
    if (cells.find(k) == cells.end())
      cells[k] = Element{{i}, {}, pose, pose, 0};
    else
      cells[k].points.push_back(i), widen(cells[k], pose);
  }
  static void widen(Element& e, int pose) {
    e.firstPose = std::min(e.firstPose, pose);
    e.lastPose = std::max(e.lastPose, pose);
  }
  template <class Condition>
  void eraseIf(const Condition& condition) {
    for (auto cell = cells.begin(); cell != cells.end();) cell = condition(cell->second) ? cells.erase(cell) : ++cell;
  }

  std::vector<Key> keysBetween(const Vector& w, const Vector& s) const {
    std::vector<Key> keys{key(w)};
    const int k[3] = {keys[0].x, keys[0].y, keys[0].z};
    const Vector d = s - w;
    double next[3], increment[3];
    for (int a = 0; a < 3; ++a) {
      next[a] = d[a] == 0  ? 2.0
                : d[a] > 0 ? ((k[a] + 1) * size_ - w[a]) / d[a]
                           : (w[a] - k[a] * size_) / std::abs(d[a]);
      increment[a] = d[a] == 0 ? 0.0 : size_ / std::abs(d[a]);
    }
    Vector position = w;
    while (size_ > 0 && std::min({next[0], next[1], next[2]}) < 1.0) {
      const int a = next[0] < next[1] && next[0] < next[2] ? 0 : next[1] < next[2] ? 1 : 2;
      position[a] += d[a] >= 0 ? size_ : -size_;
      next[a] += increment[a];
      keys.push_back(key(position));
    }
    return keys;
  }
  void addRay(int i, const Vector& sensor) {
    for (const Key& k : keysBetween(inWorld(i), sensor)) {
      const auto cell = cells.find(k);
      if (cell == cells.end()) continue;
      std::vector<int>& rays = cell->second.rays;
      if (rays.empty() || rays.back() != i) rays.push_back(i);
      widen(cell->second, at(i).second);
    }
  }

  static std::vector<int> draw(const std::vector<int>& list) {
    std::vector<int> drawn(static_cast<std::size_t>(std::floor(0.1 * static_cast<double>(list.size()))));
    for (int& member : drawn) member = list[static_cast<std::size_t>(std::rand()) % list.size()];
    return drawn;
  }
  void score(Element& element, const std::vector<Vector>& sensors) const {
    std::srand(1);
    const std::vector<int> points = draw(element.points), rays = draw(element.rays);
    for (const int i : rays)
      for (const Vector& sensor : sensors)
        for (const int j : points)
          if (j != i) element.score += counts(i, j, world(sensor, poseOf(i)), sensors);
  }
  bool counts(int i, int j, const Vector& s, const std::vector<Vector>& sensors) const {
    const Vector p = inWorld(i), q = inWorld(j), d = s - p;
    const double t = (q - p).dot(d) / d.dot(d);
    if (!(0 <= t && t <= 1)) return false;
    const Vector c = p + t * d;
    const auto distance = [&](std::size_t k) { return (q - world(sensors[k], poseOf(j))).norm(); };
    const double tolerance = std::max((distance(1) + distance(0) + distance(2)) / 3, (c - s).norm()) * 0.001;
    return t > tolerance / q.norm() && (q - c).norm() <= tolerance;
  }

  double size_, cellSize_ = 0.25;
  Points points_;
  std::map<int, Eigen::Matrix4d> poses_;
};
