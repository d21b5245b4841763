/// A corner of a room with a box, a ball and a shiny plate, seen by a depth camera.
#include "demo/DemoData.h"
#include "demo/Noise.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace mirel {

namespace {

constexpr int width = 480, height = 360;
constexpr double never = std::numeric_limits<double>::infinity();

/// A line of sight through a pixel: (a, b, 1), so that distances along it are depths.
struct Ray {
  double a, b;
};

Ray rayThrough(double x, double y) {
  constexpr double focal = 0.9 * width;
  return {(x - (width - 1) / 2.0) / focal, (y - (height - 1) / 2.0) / focal};
}

double toWall(const Ray& ray) { return 2.6 / (1 + 0.25 * ray.a); }

double toFloor(const Ray& ray) { return ray.b > 0 ? 0.75 / ray.b : never; }

/// Its front, which is turned a little.
double toBox(const Ray& ray) {
  const double depth = 1.7 / (1 - 0.35 * ray.a), x = ray.a * depth, y = ray.b * depth;
  return x > -0.75 && x < -0.15 && y > -0.1 && y < 0.74 ? depth : never;
}

double toBall(const Ray& ray) {
  const cv::Vec3d centre(0.4, 0.42, 1.75), direction(ray.a, ray.b, 1);
  constexpr double radius = 0.32;
  const double along = direction.dot(centre), square = direction.dot(direction);
  const double root = along * along - square * (centre.dot(centre) - radius * radius);
  return root > 0 ? (along - std::sqrt(root)) / square : never;
}

double depthAlong(const Ray& ray) { return std::min({toWall(ray), toFloor(ray), toBox(ray), toBall(ray)}); }

bool isShiny(const Ray& ray) { return std::hypot((ray.a - 0.28) / 0.16, (ray.b + 0.2) / 0.1) < 1; }

/// Whether light from the right of the camera reaches the point at this depth.
bool isLit(const Ray& ray, double depth) {
  constexpr double baseline = 0.08;
  for (int step = 1; step < 16; ++step) {
    const double part = step / 16.0, z = depth * part;
    const Ray toMiddle = {((ray.a * depth - baseline) * part + baseline) / z, ray.b};
    if (std::min(toBox(toMiddle), toBall(toMiddle)) < z - 0.02) return false;
  }
  return true;
}

/// The error of triangulation grows with the square of the depth.
double measured(double depth, Noise& noise) { return depth + noise.normal(0.0012) * depth * depth; }

cv::Mat depthImage(Noise& noise) {
  constexpr double dropouts = 0.0008;
  cv::Mat image(height, width, CV_16U, cv::Scalar(0));
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const Ray ray = rayThrough(x, y);
      const double depth = depthAlong(ray);
      if (isShiny(ray) || !isLit(ray, depth) || noise.uniform(0, 1) < dropouts) continue;
      image.at<ushort>(y, x) = static_cast<ushort>(std::lround(1000 * measured(depth, noise)));
    }
  }
  return image;
}

std::string pointTable(Noise& noise) {
  constexpr double outliers = 0.03;
  std::string text = "x_px,y_px,x_m,y_m,z_m\n";
  for (int count = 0; count < 5000;) {
    const double x = noise.uniform(0, width - 1), y = noise.uniform(0, height - 1);
    const Ray ray = rayThrough(x, y);
    if (isShiny(ray)) continue;
    double depth = measured(depthAlong(ray), noise);
    if (noise.uniform(0, 1) < outliers) depth *= noise.uniform(0.6, 1.4);
    text += fmt::format("{:.2f},{:.2f},{:.5f},{:.5f},{:.5f}\n", x, y, ray.a * depth, ray.b * depth, depth);
    ++count;
  }
  return text;
}

}  // namespace

void writeRoom(OutputFolder& folder) {
  Noise noise(4);
  folder.writePicture("depth.png", depthImage(noise));
  folder.write("points.csv", pointTable(noise));
}

}  // namespace mirel
