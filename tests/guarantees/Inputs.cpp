#include <features/DetectionTest.h>
#include <support/Matrices.h>
#include <texture/TextureTest.h>

#include <cmath>

#include "Capabilities.h"

namespace MirelAlgorithms {
namespace {

cv::Mat depthOf(const cv::Mat& grey) {
  cv::Mat depth;
  grey.convertTo(depth, CV_16U, 3, 900);
  depth.setTo(0, grey < 12);
  return depth;
}

std::vector<cv::KeyPoint> keyPointsIn(int side) {
  cv::RNG random(3);
  std::vector<cv::KeyPoint> keyPoints;
  for (int i = 0; i < 2 * side; ++i)
    keyPoints.emplace_back(random.uniform(0.f, float(side)), random.uniform(0.f, float(side)),
                           random.uniform(0.5f, 1.5f), random.uniform(0.f, 359.f), random.uniform(0.f, 1.f));
  return keyPoints;
}

// The same features a little aside, in another order.
void move(const Inputs& in, std::vector<cv::KeyPoint>& keyPoints, cv::Mat& descriptors) {
  cv::RNG random(4);
  const int count = static_cast<int>(in.keyPoints.size());
  for (int i = 0; i < count; ++i) {
    cv::KeyPoint k = in.keyPoints[static_cast<std::size_t>(i * 7 % count)];
    k.pt += cv::Point2f(3, -2);
    keyPoints.push_back(k);
    descriptors.push_back(in.descriptors.row(i * 7 % count));
    descriptors.at<uchar>(i, random.uniform(0, descriptors.cols)) ^= 1 << random.uniform(0, 8);
  }
}

cv::Mat rowsOf(const std::vector<cv::KeyPoint>& keyPoints) {
  cv::Mat rows;
  for (const cv::KeyPoint& k : keyPoints)
    rows.push_back(cv::Mat(cv::Vec<float, 5>(k.pt.x, k.pt.y, k.size, k.angle, k.response), true).reshape(5, 1));
  return rows;
}

// Clusters of rows that nearly agree.
cv::Mat pointsOf(int count) {
  cv::RNG random(5);
  cv::Mat points(count, 5, CV_32FC1);
  for (int i = 0; i < count; ++i) {
    const float x = static_cast<float>(i % 17), y = static_cast<float>(i % 13);
    const float row[] = {x, y, x * 0.02f, y * 0.02f, 1.f};
    for (int c = 0; c < 5; ++c) points.at<float>(i, c) = row[c] + random.uniform(0.f, 0.15f);
  }
  return points;
}

// A height field of two materials, with texture coordinates.
std::string objText(int width) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << "mtllib field.mtl\n";
  for (int i = 0; i < width * width; ++i) {
    const double x = i % width, y = i / width;
    text << "v " << x << ' ' << y << ' ' << std::sin(x * 0.7) * std::cos(y * 0.4) << "\nvt " << x / width << ' '
         << y / width << '\n';
  }
  for (int y = 0; y + 1 < width; ++y)
    for (int x = 0; x + 1 < width; ++x) {
      const int a = y * width + x + 1, b = a + 1, c = a + width, d = c + 1;
      const auto face = [&](int p, int q, int r) {
        text << "f " << p << '/' << p << "/1 " << q << '/' << q << "/1 " << r << '/' << r << "/1\n";
      };
      text << (x % 5 == 0 ? "usemtl stone\n" : x % 5 == 2 ? "usemtl moss\n" : "");
      face(a, b, c);
      face(b, d, c);
    }
  return text.str();
}

}  // namespace

Inputs::Inputs(int side_)
    : side(side_),
      seed(static_cast<std::uint64_t>(side)),
      grey(scene(side, side + 5, seed)),
      moved(seenAside(grey, static_cast<float>(side) / 40)),
      depth(depthOf(grey)),
      keyPoints(keyPointsIn(side)),
      features(rowsOf(keyPoints)),
      descriptors(noise(static_cast<int>(keyPoints.size()), 32, seed)),
      points(pointsOf(side * 6)),
      scan(randomScan(1, side * 24)),
      obj(objText(side / 6)) {
  move(*this, movedKeyPoints, movedDescriptors);
  cv::RNG random(seed);
  for (int i = 0; i < 8 * side; ++i) series.push_back(std::sin(i * 0.1) + random.gaussian(0.2));
  samples.assign(series.begin(), series.end());
}

std::uint64_t Inputs::digest() const {
  Digest all;
  all(grey)(moved)(depth)(keyPoints)(movedKeyPoints)(features)(descriptors)(movedDescriptors)(points)(series)(samples);
  return all(obj.read());
}

const Inputs& Inputs::small() {
  static const Inputs inputs(64);
  return inputs;
}

const Inputs& Inputs::large() {
  static const Inputs inputs(320);
  return inputs;
}

Digest& Digest::bytes(const void* data, std::size_t size) {
  const auto* byte = static_cast<const unsigned char*>(data);
  for (std::size_t i = 0; i < size; ++i) value_ = (value_ ^ byte[i]) * 1099511628211u;
  return *this;
}

Digest& Digest::operator()(const cv::Mat& matrix) {
  (*this)(matrix.rows)(matrix.cols)(matrix.type());
  for (int i = 0; i < matrix.rows; ++i) bytes(matrix.ptr(i), static_cast<std::size_t>(matrix.cols) * matrix.elemSize());
  return *this;
}

Digest& Digest::operator()(const FBMatch& m) {
  return (*this)(m.queryIdx)(m.trainIdx)(m.distance)(m.predictedX)(m.predictedY);
}

Digest& Digest::operator()(const MotionEstimate& m) {
  (*this)(m.translation)(m.scale)(m.rotation)(m.deviation)(m.meanResidual)(m.meanInlierResidual)(m.points);
  (*this)(m.outlierRows)(m.center[0])(m.center[1]);
  for (const double element : m.matrix) (*this)(element);
  return *this;
}

Digest& Digest::operator()(const MeshSimplification& mesh) {
  for (const Vertex& v : mesh.vertices) (*this)(v.p);
  for (const Triangle& t : mesh.triangles) {
    for (const int v : t.v) (*this)(v);
    for (const vec3f& uv : t.uvs) (*this)(uv);
    (*this)(t.n)(t.attr)(t.material);
  }
  return (*this)(mesh.mtllib)(mesh.materials);
}

}  // namespace MirelAlgorithms
