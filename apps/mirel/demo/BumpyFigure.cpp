/// A sphere with hills and limbs, as rings of equal latitude between two poles.
#include "demo/DemoData.h"
#include "demo/Noise.h"

#include <fmt/format.h>

#include <cmath>

namespace mirel {

namespace {

constexpr int rings = 120, across = 240;
constexpr double roughness = 0.0008;  // standard deviation along the normal, of a radius of 1

struct Hill {
  cv::Vec3d direction;
  double steepness, height;
};

std::vector<Hill> raiseHills(Noise& noise) {
  std::vector<Hill> hills;
  for (int i = 0; i < 40; ++i) {
    const double z = noise.uniform(-1, 1), angle = noise.uniform(0, 2 * CV_PI), ring = std::sqrt(1 - z * z);
    const cv::Vec3d direction(ring * std::cos(angle), ring * std::sin(angle), z);
    if (i % 5 == 0) {
      hills.push_back({direction, noise.uniform(30, 60), noise.uniform(0.3, 0.55)});  // a limb
    } else {
      hills.push_back({direction, noise.uniform(8, 150), noise.uniform(-0.06, 0.1)});
    }
  }
  return hills;
}

std::string vertexLine(const cv::Vec3d& direction, const std::vector<Hill>& hills, Noise& noise) {
  double radius = 1 + noise.normal(roughness);
  for (const Hill& hill : hills) {
    radius += hill.height * std::exp(hill.steepness * (hill.direction.dot(direction) - 1));
  }
  return fmt::format("v {:.6f} {:.6f} {:.6f}\n", radius * direction[0], radius * direction[1], radius * direction[2]);
}

std::string vertices() {
  Noise noise(3);
  const std::vector<Hill> hills = raiseHills(noise);
  std::string text = vertexLine({0, 1, 0}, hills, noise);
  for (int i = 1; i < rings; ++i) {
    const double y = std::cos(CV_PI * i / rings), ring = std::sin(CV_PI * i / rings);
    for (int j = 0; j < across; ++j) {
      const double angle = 2 * CV_PI * j / across;
      text += vertexLine({ring * std::cos(angle), y, ring * std::sin(angle)}, hills, noise);
    }
  }
  return text + vertexLine({0, -1, 0}, hills, noise);
}

/// Counted from 1; the first and the last vertex are the poles.
std::string faces() {
  const auto vertex = [](int ring, int j) { return 2 + (ring - 1) * across + j % across; };
  const int last = 2 + (rings - 1) * across;
  std::string text;
  for (int j = 0; j < across; ++j) {
    text += fmt::format("f 1 {} {}\n", vertex(1, j + 1), vertex(1, j));
    for (int i = 1; i < rings - 1; ++i) {
      text += fmt::format("f {} {} {}\n", vertex(i, j), vertex(i, j + 1), vertex(i + 1, j));
      text += fmt::format("f {} {} {}\n", vertex(i, j + 1), vertex(i + 1, j + 1), vertex(i + 1, j));
    }
    text += fmt::format("f {} {} {}\n", last, vertex(rings - 1, j), vertex(rings - 1, j + 1));
  }
  return text;
}

}  // namespace

void writeBumpyFigure(OutputFolder& folder) {
  folder.write("figure.obj", "# a closed figure, metres\n" + vertices() + faces());
}

}  // namespace mirel
