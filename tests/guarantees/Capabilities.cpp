#include "Capabilities.h"

#include <support/SettingsOf.h>
#include <texture/TextureTest.h>

#include <array>
#include <new>
#include <ostream>
#include <stdexcept>

namespace MirelAlgorithms {
namespace {

/// What the call puts out, or what it says: builds without OpenCV's xfeatures2d refuse LATCH and FREAK.
template <class Call>
std::uint64_t digestOf(const Call& call) {
  Digest digest;
  try {
    call(digest);
  } catch (const std::runtime_error& refusal) {
    digest(std::string(refusal.what()));
  }
  return digest;
}

// Frame

std::uint64_t clock(const Inputs&) {
  const double first = timestamp0(), now = timestamp(), later = timestamp();
  const std::uint64_t milliseconds = timestampMS();
  return Digest()(first ==
                  timestamp0())(first <= now)(now <= later)(static_cast<double>(milliseconds) / 1000 > now - 2);
}

std::uint64_t facts(const Inputs&) {
  Digest digest;
  digest(std::string(buildInfo().version))(std::string(buildInfo().openCV))(buildInfo().xfeatures2d);
  for (const SettingInfo& info : settingsCatalogue()) digest(info.key)(info.meaning)(info.readBy);
  return digest;
}

// Features

std::uint64_t corners(const Inputs& in, const Settings& settings) {
  cv::Mat features;
  const auto map = std::make_shared<cv::Mat>();
  retrieveFeaturesFPGA(in.grey, features, settings, map);
  return Digest()(features)(*map);
}

std::uint64_t floatingPointCorners(const Inputs& in) { return corners(in, {}); }

std::uint64_t fixedPointCorners(const Inputs& in) {
  const Settings settings = settingsOf({{L"FBMBlockSize", 7}});
  settings->set(L"FBMFpgaQuantized", true);
  settings->set(L"UseBilateralFilter", true);
  settings->set(L"FBMUseAutoThreshold", true);
  return corners(in, settings);
}

std::uint64_t dumpedCorners(const Inputs& in) {
  const ObjFile folder("");
  std::filesystem::remove(folder.name());
  std::filesystem::create_directory(folder.name());
  const Settings settings(new AttrContainer());
  const std::string prefix = folder.name() + std::string("/");
  settings->set(L"FBMFpgaQuantized", true);
  settings->set(L"FBMWorkDir", std::wstring(prefix.begin(), prefix.end()).c_str());
  settings->set(L"FBMWriteSobel", true);
  settings->set(L"FBMWriteEigenvals", true);
  cv::Mat features;
  retrieveFeaturesFPGA(in.grey(cv::Rect(0, 0, in.side / 4, in.side / 4)), features, settings, nullptr);
  Digest digest;
  for (const char* name : {"sobeldx_q.txt", "sobeldy_q.txt", "eigenVals_q.txt"}) {
    std::ostringstream text;
    text << std::ifstream(prefix + name).rdbuf();
    digest(text.str());
  }
  std::filesystem::remove_all(folder.name());
  return digest;
}

std::uint64_t features(const Inputs& in, const Settings& settings, bool descriptors) {
  return digestOf([&](Digest& digest) {
    cv::Mat features;
    digest(retrieveFeatures(in.grey, features, settings, descriptors))(features);
  });
}

template <int detector>
std::uint64_t detected(const Inputs& in) {
  return features(in, settingsOf({{L"FBMType", 2}, {L"FBMFeatureType", detector}}), false);
}

std::uint64_t detectedAndDescribed(const Inputs& in) {
  return features(in, settingsOf({{L"FBMType", 2}, {L"FBMDescriptorType", 4}}), true);
}

std::uint64_t refined(const Inputs& in) { return features(in, settingsOf({{L"FBMType", 1}}), false); }

std::uint64_t keyPointsWithLatch(const Inputs& in) {
  return digestOf([&](Digest& digest) {
    std::vector<cv::KeyPoint> keyPoints;
    cv::Mat descriptors;
    digest(retrieveFeatures(in.grey, keyPoints, descriptors, settingsOf({{L"FBMType", 1}})))(keyPoints)(descriptors);
  });
}

template <int type, int family>
std::uint64_t described(const Inputs& in) {
  return digestOf([&](Digest& digest) {
    cv::Mat features = in.features.clone(), descriptors;
    const Settings settings = settingsOf({{L"FBMType", type}, {L"FBMDescriptorType", family}});
    digest(retrieveDescriptors(in.grey, features, descriptors, settings))(features)(descriptors);
  });
}

std::uint64_t scalingOrb(const Inputs& in) {
  unsigned char patch[32];
  MirelScalingORB::getNormalizedPatchDescriptor(in.grey(cv::Rect(3, 5, 33, 41)), patch, 32);
  return Digest()(MirelScalingORB(in.grey).getDescriptors(in.keyPoints))(cv::Mat(1, 32, CV_8UC1, patch));
}

// Matching

std::uint64_t hamming(const Inputs& in) {
  Digest digest;
  for (int i = 0; i < in.descriptors.rows; ++i) {
    const auto* a = in.descriptors.ptr<std::uint64_t>(i);
    const auto* b = in.movedDescriptors.ptr<std::uint64_t>(i);
    digest(computeHammingDistance64(a, b, 4))(computeHammingDistance(a, b, 4, 2));
    digest(computeHammingDistance128(reinterpret_cast<const __m128i*>(a), reinterpret_cast<const __m128i*>(b), 3));
  }
  return digest;
}

std::uint64_t validationParams(const Inputs& in) {
  alignas(FBMValidationParams) unsigned char storage[sizeof(FBMValidationParams)] = {};
  const auto* wrong = new (storage) FBMValidationParams(FBMFilterMode(in.side / 100));
  Digest digest;
  for (const FBMValidationParams& p : {*wrong, FBMValidationParams(Narrow), FBMValidationParams(Exhaustive)})
    digest(p.minMatches)(p.searchRadiusSq)(p.maxDistance)(p.auxLimit1)(p.auxScale)(p.ratio)(p.refine);
  return digest;
}

template <FBMFilterMode mode>
std::uint64_t matched(const Inputs& in) {
  std::vector<FBMatch> matches;
  std::vector<FBPrediction> predictions;
  const bool enough = matchFeatures(in.keyPoints, in.descriptors, in.movedKeyPoints, in.movedDescriptors,
                                    FBMValidationParams(mode), matches, predictions);
  return Digest()(enough)(matches)(predictions);
}

std::uint64_t prediction(const Inputs& in) {
  FeaturePrediction track;
  track.update(in.grey, 7);
  Digest digest;
  for (std::uint64_t t = 1; t < 40; ++t) {
    track.update({2 + in.series[t], 3 - in.series[2 * t]}, 3 * t);
    FeaturePrediction copy(track);
    copy = track;
    const SVec2d position = copy.predictPosition(2 * t), speed = copy.predictSpeed(3 * t);
    digest(copy.predictable(2 * t))(copy.predictableSpeed(3 * t))(position)(speed);
  }
  return digest;
}

std::uint64_t leastSquares(const Inputs& in) {
  constexpr int cols = 6;
  const int rows = in.side;
  const double* b = in.series.data() + rows * cols;
  Lsq solver;
  std::vector<double> x(cols), weights(static_cast<std::size_t>(rows));
  Digest digest;
  for (const unsigned mode : {0u, 1u}) digest(solver.lsq(in.series.data(), b, x.data(), rows, cols, mode, 2, 0))(x);
  digest(solver.outlier())(solver.outliers())(solver.rms())(Lsq::lsqWeights(b, weights.data(), rows, 2, 0));
  return digest(weights);
}

std::uint64_t motion(const Inputs& in) {
  std::vector<SVec2d> from, to;
  std::vector<cv::Vec2f> from32, to32;
  for (std::size_t i = 0; i < in.keyPoints.size(); ++i) {
    from32.emplace_back(in.keyPoints[i].pt);
    to32.emplace_back(in.keyPoints[i].pt * 1.1f + cv::Point2f(3, i % 9 ? 2 : 40));
    from.push_back({from32[i][0], from32[i][1]});
    to.push_back({to32[i][0], to32[i][1]});
  }
  Digest digest;
  for (const MotionEstimate& m :
       {MotionEstimate::estimate(from, to, std::vector<double>(from.size(), 0.5)),
        MotionEstimate::estimate(from, to, {}, {1, 2}), MotionEstimate::estimate(from32, to32, {})})
    digest(m)(m.apply(from[0]))(m.apply(from32[0]))(MotionEstimate::apply(m.matrix, from[0]));
  MotionEstimate none = MotionEstimate::estimate(from, to, {});
  none.reset();
  return digest(none.isValid());
}

// Filters

template <class Filter>
std::uint64_t filtered(const Inputs& in, const Filter& filter) {
  Filter one = filter;
  std::vector<float> values(in.samples.size()), lanes(in.samples.size());
  one.process(in.samples, values);
  std::vector<Filter> channels(8, filter);
  for (int pass = 0; pass < 8; ++pass) Filter::process(channels, in.samples, lanes);
  Digest digest;
  digest(values)(lanes)(one.updates());
  one.reset();
  for (const float sample : in.samples) one.update(sample);
  return digest(one.value());
}

std::uint64_t butterworth(const Inputs& in) {
  return Digest()(filtered(in, Butterworth(5, 100, Butterworth::Lowpass, 1.41f)))(filtered(in, Butterworth()));
}

std::uint64_t bandpass(const Inputs& in) {
  return Digest()(filtered(in, ButterworthBandpass(1, 30, 100, 1.2f)))(filtered(in, ButterworthBandpass()));
}

std::uint64_t inertial(const Inputs& in) {
  MayhonyAHRS attitude;
  AccelIntegrator integrator;
  Digest digest;
  for (std::size_t i = 0; i + 6 <= in.samples.size(); i += 6) {
    const cv::Vec3f gyro(&in.samples[i]), accel(&in.samples[i + 3]);
    attitude.update(gyro, accel, gyro, 0.01f);
    integrator.update(accel, 0.01f);
    digest(attitude.value())(attitude.gravity())(attitude.angles())(attitude.standstill(gyro))(integrator.position());
  }
  attitude.reset();
  integrator.reset();
  return digest(attitude.value())(integrator.speed());
}

std::uint64_t smoothSeries(const Inputs& in) {
  std::vector<double> series = in.series, out;
  Digest digest;
  for (const int window : {5, 25}) digest(sgCubicSmoother(series, out, window))(out);
  return digest(sgCubicSmoother(series, series, 9))(series);
}

// Geometry

std::uint64_t frusta(const Inputs& in) {
  std::vector<Frustum> views;
  Digest digest;
  for (const auto& [number, pose] : in.scan.poses) {
    const Mat4d m = toMat4d(pose.transpose());
    views.emplace_back(m, 1.0);
    digest(views.back().checkPose(toMat4d(in.scan.poses.begin()->second.transpose())));
    for (int i = 0; i < in.side; ++i) {
      const Eigen::Vector3d& p = in.scan.points[static_cast<std::size_t>(i)].first;
      digest(Frustum::contains(Frustum(m, 0.1, 9, 1, 1), {p.x(), p.y(), p.z()}));
    }
  }
  for (const Frustum& a : views) {
    const Frustum& b = views[5];
    digest(Frustum::intersect(a, b))(Frustum::intersect(a.pose, b.pose, 0.4, 2, 1, 1, 1));
    digest(Frustum::sameViewDirection(a.pose, b.pose, 1.0));
  }
  return digest;
}

std::uint64_t unionFind(const Inputs& in) {
  UnionFind sets(4 * in.side);
  Digest digest;
  for (int i = 1; i < 2 * in.side; ++i) {
    sets.unionPartitions(i, i * i % (3 * in.side));
    const int number = sets.findPartitionIndex(i);
    digest(sets.findPartition(i))(sets.getCardinality(i))(sets.getCardinalityIndex(number));
    digest(sets.getPartitionRepresentative(number))(sets.getNumPartitions());
  }
  return digest(sets.getPartitions());
}

std::uint64_t visibility(const Inputs& in) {
  Algorithms::VisibilityCheck check(0.25);
  check.updateGrid(in.scan.points, in.scan.poses, in.scan.sensors);
  std::uint64_t cells = 0;  // in any order
  for (const auto& [key, e] : check.getGrid().cells())
    cells += Digest()(key.x)(key.y)(key.z)(e.points)(e.rays)(e.firstPose)(e.lastPose)(e.score);
  Digest digest;
  digest(cells);
  for (Algorithms::VisibilityCheck copy = check;;) {
    const auto [seen, seenBy, first, last, score] = copy.getCurrentMax();
    digest(seen)(seenBy)(first)(last)(score);
    if (score == 0) return digest;
  }
}

// Smoothing

template <int mode, int window>
std::uint64_t smoothDepth(const Inputs& in) {
  cv::Mat out;
  const Settings settings = settingsOf({{L"smoothDenseMode", mode}, {L"smoothDenseRadius", window}});
  return Digest()(smoothDenseZ16(in.depth, out, settings))(out);
}

template <int mode>
std::uint64_t smoothPoints(const Inputs& in) {
  cv::Mat out;
  const Settings settings = settingsOf({{L"smoothSparseMode", mode}, {L"smoothSparseMaxPts", 200}});
  return Digest()(smoothSparse3D(in.points, out, settings))(out);
}

// Texture

Settings textureSettings() { return settingsOf({{L"txmORBedgeThreshold", 20}, {L"txmORBpatchSize", 15}}); }

std::uint64_t textureFeatures(const Inputs& in) {
  std::vector<cv::Vec2f> points;
  cv::Mat descriptors;
  return Digest()(textureExtract(in.grey, points, descriptors, textureSettings()))(points)(descriptors);
}

std::uint64_t textureMatches(const Inputs& in) {
  std::vector<cv::Vec2f> here, there;
  for (const cv::KeyPoint& k : in.keyPoints) here.emplace_back(k.pt);
  for (const cv::KeyPoint& k : in.movedKeyPoints) there.emplace_back(k.pt);
  std::vector<cv::Vec3i> matches;
  Digest digest;
  digest(textureMatch(here, in.descriptors, there, in.movedDescriptors, matches, {}));
  return digest(textureMatch(in.descriptors, in.movedDescriptors, matches, with(L"txmUniquenessRatio", 0.0)))(matches);
}

std::uint64_t textureOfTwo(const Inputs& in) {
  std::vector<cv::Vec2f> here, there;
  return Digest()(textureExtractAndMatch(in.grey, in.moved, here, there, textureSettings()))(here)(there);
}

std::uint64_t textureOfMany(const Inputs& in) {
  std::vector<MultiMatch> result;
  Digest digest;
  digest(textureMultiMatch({in.grey, in.moved, in.grey}, result, textureSettings()));
  for (const MultiMatch& m : result) digest(m.point)(m.descriptor)(m.multiplicity)(m.maxDistance);
  return digest;
}

// Mesh

MeshSimplification loaded(const Inputs& in) {
  MeshSimplification mesh;
  mesh.load_obj(in.obj.name(), true);
  return mesh;
}

std::uint64_t objReading(const Inputs& in) {
  char name[] = "  stone \n";
  return Digest()(loaded(in))(isReadableFace("f 1/2 3/4"))(isReadableFace("f 1//2 3//4 5//6"))(
      std::string(MeshSimplification().trimwhitespace(name)));
}

std::uint64_t objWriting(const Inputs& in) {
  const ObjFile file("");
  loaded(in).write_obj(file.name());
  return Digest()(file.read());
}

std::uint64_t simplified(const Inputs& in) {
  MeshSimplification mesh = loaded(in);
  mesh.simplify_mesh(in.side, 7.0, false);
  return Digest()(mesh);
}

std::uint64_t simplifiedLossless(const Inputs& in) {
  MeshSimplification mesh = loaded(in);
  for (Vertex& vertex : mesh.vertices) vertex.p.z = 0.25 * vertex.p.x;
  mesh.simplify_mesh_lossless(false);
  return Digest()(mesh);
}

std::uint64_t meshSteps(const Inputs& in) {
  MeshSimplification mesh = loaded(in);
  mesh.update_mesh(0);
  Digest digest;
  vec3f p;
  int removed = 0;
  for (int i = 0; i + 1 < static_cast<int>(mesh.vertices.size()); i += 7) {
    Vertex &a = mesh.vertices[static_cast<std::size_t>(i)], &b = mesh.vertices[static_cast<std::size_t>(i) + 1];
    std::vector<int> deleted(static_cast<std::size_t>(a.tcount));
    digest(mesh.calculate_error(i, i + 1, p))(p)(mesh.vertex_error(a.q, p.x, p.y, p.z));
    digest(mesh.flipped(p, i, i + 1, a, b, deleted))(deleted);
    mesh.update_uvs(i, a, p, deleted);
    digest(mesh.barycentric(p, a.p, b.p, {0, 0, 9}))(mesh.interpolate(p, a.p, b.p, {0, 0, 9}, mesh.triangles[0].uvs));
    mesh.update_triangles(i, a, deleted, removed);
    digest(a.p.dot(b.p))(a.p.cross(b.p))(a.p.normalized())(a.q.det(0, 1, 2, 1, 4, 5, 2, 5, 7));
  }
  mesh.compact_mesh();
  return digest(removed)(mesh)((mesh.min)(2, 1));
}

}  // namespace

const std::vector<Capability>& capabilities() {
  static const std::vector<Capability> all = {
      {"frame_clock", clock},
      {"frame_facts", facts},
      {"corners_floatingPoint", floatingPointCorners},
      {"corners_fixedPoint", fixedPointCorners},
      {"corners_dumped", dumpedCorners},
      {"features_gftt", detected<0>},
      {"features_akaze", detected<1>},
      {"features_mser", detected<2>},
      {"features_orb", detected<3>},
      {"features_brisk", detected<5>},
      {"features_described", detectedAndDescribed},
      {"features_refined", refined},
      {"features_latch", keyPointsWithLatch},
      {"descriptors_fixedPoint", described<0, 0>},
      {"descriptors_latch", described<1, 0>},
      {"descriptors_freak", described<2, 2>},
      {"descriptors_brisk", described<2, 3>},
      {"descriptors_orb", described<2, 4>},
      {"descriptors_scalingOrb", scalingOrb},
      {"matching_hamming", hamming},
      {"matching_params", validationParams},
      {"matching_narrow", matched<Narrow>},
      {"matching_wide", matched<Wide>},
      {"matching_exhaustive", matched<Exhaustive>},
      {"matching_prediction", prediction},
      {"matching_leastSquares", leastSquares},
      {"matching_motion", motion},
      {"filters_butterworth", butterworth},
      {"filters_bandpass", bandpass},
      {"filters_inertial", inertial},
      {"filters_series", smoothSeries},
      {"geometry_frusta", frusta},
      {"geometry_unionFind", unionFind},
      {"geometry_visibility", visibility},
      {"smoothing_median", smoothDepth<0, 5>},
      {"smoothing_nonLocalMeans", smoothDepth<1, 3>},
      {"smoothing_neighbours", smoothPoints<0x2000>},
      {"smoothing_grid", smoothPoints<0x3000>},
      {"smoothing_gridHalf", smoothPoints<0x4000>},
      {"smoothing_decimation", smoothPoints<0x5000>},
      {"smoothing_decimationFromFour", smoothPoints<0x6000>},
      {"texture_features", textureFeatures},
      {"texture_matches", textureMatches},
      {"texture_ofTwo", textureOfTwo},
      {"texture_ofMany", textureOfMany},
      {"mesh_reading", objReading},
      {"mesh_writing", objWriting},
      {"mesh_simplified", simplified},
      {"mesh_lossless", simplifiedLossless},
      {"mesh_steps", meshSteps},
  };
  return all;
}

std::ostream& operator<<(std::ostream& stream, const Capability& capability) { return stream << capability.name; }

}  // namespace MirelAlgorithms
