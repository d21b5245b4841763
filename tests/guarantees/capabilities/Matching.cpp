#include <new>

#include "../Capabilities.h"

namespace MirelAlgorithms {
namespace {

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

}  // namespace

std::vector<Capability> matchingCapabilities() {
  return {
      {"matching_hamming", hamming},
      {"matching_params", validationParams},
      {"matching_narrow", matched<Narrow>},
      {"matching_wide", matched<Wide>},
      {"matching_exhaustive", matched<Exhaustive>},
      {"matching_prediction", prediction},
      {"matching_leastSquares", leastSquares},
      {"matching_motion", motion},
  };
}

}  // namespace MirelAlgorithms
