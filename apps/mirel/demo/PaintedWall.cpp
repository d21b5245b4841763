/// A wall full of painted shapes, and a camera that looks at it: plane and picture are related by a homography.
#include "demo/DemoData.h"
#include "demo/Noise.h"

#include <fmt/format.h>

#include <cmath>
#include <opencv2/imgproc.hpp>

namespace mirel {

namespace {

const cv::Size wallSize(1800, 1350), viewSize(640, 480);

void paintShape(cv::Mat& wall, Noise& noise) {
  const double radius = 5 / std::sqrt(noise.uniform(0.004, 1));  // many small ones, few large ones
  const cv::Point2d centre(noise.uniform(0, wall.cols), noise.uniform(0, wall.rows));
  const cv::Scalar grey(noise.uniform(20, 240));
  const int corners = static_cast<int>(noise.uniform(2, 7));
  if (corners == 2) {
    cv::circle(wall, centre, static_cast<int>(radius), grey, cv::FILLED, cv::LINE_AA);
    return;
  }
  const double start = noise.uniform(0, 2 * CV_PI);
  std::vector<cv::Point> polygon;
  for (int i = 0; i < corners; ++i) {
    const double angle = start + 2 * CV_PI * i / corners, reach = radius * noise.uniform(0.5, 1.3);
    polygon.emplace_back(centre + reach * cv::Point2d(std::cos(angle), std::sin(angle)));
  }
  cv::fillPoly(wall, std::vector<std::vector<cv::Point>>{polygon}, grey, cv::LINE_AA);
}

cv::Mat paintWall() {
  Noise noise(1);
  cv::Mat wall(wallSize, CV_8U, cv::Scalar(150));
  for (int i = 0; i < 6000; ++i) paintShape(wall, noise);
  cv::GaussianBlur(wall, wall, {}, 0.8);
  return wall;
}

/// Where a camera stands, in pixels of the wall from its middle, and how it is turned, in degrees.
struct Camera {
  double x, y, distance;
  double yaw = 0, pitch = 0, roll = 0;
};

/// About axis 0, 1 or 2.
cv::Matx33d turn(int axis, double degrees) {
  const int i = (axis + 1) % 3, j = (axis + 2) % 3;
  const double angle = degrees * CV_PI / 180;
  cv::Matx33d matrix = cv::Matx33d::eye();
  matrix(i, i) = matrix(j, j) = std::cos(angle);
  matrix(i, j) = -std::sin(angle);
  matrix(j, i) = std::sin(angle);
  return matrix;
}

/// From the wall to the picture.
cv::Matx33d homography(const Camera& camera) {
  constexpr double focal = 620;
  const cv::Matx33d lens(focal, 0, (viewSize.width - 1) / 2.0, 0, focal, (viewSize.height - 1) / 2.0, 0, 0, 1);
  const cv::Matx33d rotation = turn(2, camera.roll) * turn(0, camera.pitch) * turn(1, camera.yaw);
  const cv::Matx33d plane(1, 0, -wallSize.width / 2.0 - camera.x, 0, 1, -wallSize.height / 2.0 - camera.y, 0, 0,
                          camera.distance);
  return lens * rotation * plane;
}

cv::Mat photograph(const cv::Mat& wall, const Camera& camera, Noise& noise) {
  cv::Mat picture;
  cv::warpPerspective(wall, picture, homography(camera), viewSize, cv::INTER_LINEAR, cv::BORDER_REFLECT);
  for (auto pixel = picture.begin<uchar>(); pixel != picture.end<uchar>(); ++pixel) {
    *pixel = cv::saturate_cast<uchar>(*pixel + noise.normal(2));
  }
  return picture;
}

}  // namespace

void writePaintedWall(OutputFolder& folder) {
  const cv::Mat wall = paintWall();
  Noise noise(2);
  for (int i = 0; i < 6; ++i) {
    const Camera camera{-60.0 + 16 * i, -8.0 * i, 640.0 - 12 * i, 0.5 * i, 0.3 * i, 1.5 * i};
    folder.writePicture(fmt::format("view_{}.png", i + 1), photograph(wall, camera, noise));
  }
  const Camera photos[] = {{0, 0, 640}, {-130, 30, 650, 11, -2, -5}, {110, -40, 690, -9, 3, 6}};
  for (int i = 0; i < 3; ++i) {
    folder.writePicture(fmt::format("photo_{}.png", i + 1), photograph(wall, photos[i], noise));
  }
}

}  // namespace mirel
