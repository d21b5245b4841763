// Cameras around two tables: which views overlap, and which cameras belong together.
#include <MirelAlgorithms/MirelAlgorithms.h>

#include <cmath>
#include <cstdio>

using namespace MirelAlgorithms;

namespace {

// A camera on a circle of 1 m around a centre, looking at it along its -z axis, with y up. The world's z points up.
Mat4d around(double centreX, double degrees) {
  const double angle = degrees * 3.141592653589793 / 180.0, c = std::cos(angle), s = std::sin(angle);
  const double elements[16] = {-s,          c, 0, 0,  // x axis: to the right
                               0,           0, 1, 0,  // y axis: up
                               c,           s, 0, 0,  // z axis: away from the centre
                               c + centreX, s, 0, 1};
  Mat4d pose;
  for (int i = 0; i < 16; ++i) pose[i] = elements[i];
  return pose;
}

}  // namespace

int main() {
  std::vector<Frustum> views;
  for (const double centreX : {0.0, 10.0})
    for (const double degrees : {0.0, 40.0, 80.0})
      views.emplace_back(around(centreX, degrees), 0.3, 1.5, 0.7, -1);  // 0.3 to 1.5 m, 0.7 rad wide, along -z

  const int count = static_cast<int>(views.size());
  UnionFind groups(count);
  for (int a = 0; a < count; ++a)
    for (int b = a + 1; b < count; ++b)
      if (Frustum::intersect(views[static_cast<std::size_t>(a)], views[static_cast<std::size_t>(b)]))
        groups.unionPartitions(a, b);

  for (const std::vector<int>& group : groups.getPartitions()) {
    std::printf("together:");
    for (const int view : group) std::printf(" %d", view);
    std::printf("\n");
  }
  for (const double x : {0.0, 5.0}) {
    int seenBy = 0;
    for (const Frustum& view : views) seenBy += Frustum::contains(view, Vec3d<double>(x, 0.0, 0.0));
    std::printf("the point at x = %.0f m is seen by %d of %d\n", x, seenBy, count);
  }
  return groups.getNumPartitions() == 2 ? 0 : 1;
}
