/// Every capability of the library on inputs that never change, with all that it puts out drawn together in one number.
#pragma once

#include <MirelAlgorithms/MirelAlgorithms.h>
#include <geometry/RandomScan.h>
#include <mesh/ObjFile.h>

#include <cstdint>
#include <iosfwd>
#include <type_traits>
#include <vector>

namespace MirelAlgorithms {

/// What all capabilities run on, made from fixed seeds.
struct Inputs {
  explicit Inputs(int side);

  /// Of what could be written to by mistake.
  std::uint64_t digest() const;

  static const Inputs& small();  ///< for thousands of calls
  static const Inputs& large();  ///< split among threads

  int side;
  std::uint64_t seed;
  cv::Mat grey, moved, depth;
  std::vector<cv::KeyPoint> keyPoints, movedKeyPoints;
  cv::Mat features;  ///< the key points as rows
  cv::Mat descriptors, movedDescriptors;
  cv::Mat points;  ///< rows of five
  std::vector<double> series;
  std::vector<float> samples;
  Scan scan;
  ObjFile obj;
};

/// FNV-1a (Fowler, Noll, Vo) of values one after the other.
class Digest {
 public:
  template <class T>
  Digest& operator()(const T& value) requires std::is_arithmetic_v<T> || std::is_enum_v<T> {
    return bytes(&value, sizeof value);
  }
  Digest& operator()(const cv::Mat& matrix);
  Digest& operator()(const std::string& text) { return bytes(text.data(), text.size()); }
  Digest& operator()(const std::wstring& text) { return bytes(text.data(), text.size() * sizeof(wchar_t)); }
  Digest& operator()(const cv::KeyPoint& k) { return (*this)(k.pt.x)(k.pt.y)(k.size)(k.angle)(k.response)(k.octave); }
  Digest& operator()(const SVec2d& v) { return (*this)(v.x)(v.y); }
  Digest& operator()(const vec3f& v) { return (*this)(v.x)(v.y)(v.z); }
  Digest& operator()(const Eigen::Vector3d& v) { return (*this)(v.x())(v.y())(v.z()); }
  Digest& operator()(const FBMatch& m);
  Digest& operator()(const FBPrediction& p) { return (*this)(p.x)(p.y)(p.searchRadiusSq)(p.state); }
  Digest& operator()(const MotionEstimate& m);
  Digest& operator()(const MeshSimplification& mesh);
  template <class T, int n>
  Digest& operator()(const cv::Vec<T, n>& v) {
    return bytes(v.val, sizeof v.val);
  }
  template <class T>
  Digest& operator()(const std::vector<T>& list) {
    (*this)(list.size());
    for (const T& value : list) (*this)(value);
    return *this;
  }

  operator std::uint64_t() const { return value_; }

 private:
  Digest& bytes(const void* data, std::size_t size);

  std::uint64_t value_ = 14695981039346656037u;
};

struct Capability {
  const char* name;
  std::uint64_t (*run)(const Inputs&);
};
std::ostream& operator<<(std::ostream& stream, const Capability& capability);

const std::vector<Capability>& capabilities();  ///< of all subsystems
std::vector<Capability> frameCapabilities(), featuresCapabilities(), matchingCapabilities(), filtersCapabilities(),
    geometryCapabilities(), smoothingCapabilities(), textureCapabilities(), meshCapabilities();

}  // namespace MirelAlgorithms
