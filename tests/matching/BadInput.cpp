#include <MirelAlgorithms/matching/FeaturePrediction.h>
#include <MirelAlgorithms/matching/Hamming.h>
#include <MirelAlgorithms/matching/LeastSquares.h>
#include <MirelAlgorithms/matching/MotionEstimate.h>
#include <matching/MatchingInputs.h>
#include <support/BadInput.h>
#include <support/Matrices.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN(), infinite = std::numeric_limits<double>::infinity();

TEST(BadInput, matchFeatures) {
  struct Row {
    const char* defect;
    std::string refusal;  ///< empty: false is returned
    void (*change)(Input&);
  };
  const std::string width0 = "descriptors1: width 0 given, at least one byte per descriptor expected";
  std::vector<FBMatch> matches(3);
  std::vector<FBPrediction> predictions(7);
  BadInput pairs("matchFeatures");
  pairs.keep(matches, predictions);
  for (const Row& row : {
           Row{"no first frame", "", [](Input& in) { in.keyPoints1.clear(), in.descriptors1.release(); }},
           Row{"no second frame", "", [](Input& in) { in.keyPoints2.clear(), in.descriptors2.release(); }},
           Row{"rows without key points", "", [](Input& in) { in.keyPoints2.clear(); }},
           Row{"key points without rows", "", [](Input& in) { in.descriptors2.release(); }},
           Row{"fewer rows than key points", "", [](Input& in) { in.descriptors1 = in.descriptors1.row(0); }},
           Row{"more rows than key points", "", [](Input& in) { in.keyPoints2.resize(1); }},
           Row{"other width", "", [](Input& in) { in.descriptors1 = in.descriptors1.colRange(0, 127); }},
           Row{"other width and type", "", [](Input& in) { in.descriptors2 = cv::Mat(2, 16, CV_32FC1); }},
           Row{"width 0", width0, [](Input& in) { in.descriptors1 = in.descriptors2 = cv::Mat(2, 0, CV_8UC1); }},
           Row{"volumes", "",
               [](Input& in) {
                 const int sizes[] = {2, 4, 4};
                 in.descriptors1 = in.descriptors2 = cv::Mat(3, sizes, CV_8UC1);
               }},
           Row{"signed", "descriptors1: CV_8SC1 given, CV_8UC1 expected",
               [](Input& in) { in.descriptors1 = cv::Mat(2, 128, CV_8SC1); }},
           Row{"floats", "descriptors2: CV_32FC1 given, CV_8UC1 expected",
               [](Input& in) { in.descriptors2 = cv::Mat(2, 128, CV_32FC1); }},
       }) {
    Input in = inputWithOnes({0, 500}, {0, 500});
    row.change(in);
    pairs.expect(
        row.defect, row.refusal.empty() ? "false" : refused + "matchFeatures: " + row.refusal,
        [&] {
          return matchFeatures(in.keyPoints1, in.descriptors1, in.keyPoints2, in.descriptors2, in.params, matches,
                               predictions);
        },
        in.descriptors1, in.descriptors2);
  }
  pairs.expect("one vector of key points and one matrix for both frames", "true", [] {
    const Input in = inputWithOnes({0, 500}, {0, 500});
    std::vector<FBMatch> found;
    std::vector<FBPrediction> fresh;
    return matchFeatures(in.keyPoints1, in.descriptors1, in.keyPoints1, in.descriptors1, in.params, found, fresh);
  });
}

TEST(BadInput, computeHammingDistance) {
  const std::uint64_t zeros[4] = {}, ones[4] = {~0ull, ~0ull, ~0ull, ~0ull};
  const auto as128 = [](const std::uint64_t* words) { return reinterpret_cast<const __m128i*>(words); };
  BadInput pairs("computeHammingDistance");
  pairs.keep(zeros, ones);
  for (const unsigned shift : {16u, 32u, 63u, 64u, ~0u}) {
    const std::string name = "shift " + std::to_string(shift);
    pairs.expect(name + " of 64 bits", "0", [&] { return computeHammingDistance64(zeros, ones, shift); });
    pairs.expect(name + " of 128 bits", "0",
                 [&] { return computeHammingDistance128(as128(zeros), as128(ones), shift); });
    pairs.expect(name + " of 256 bits", "0", [&] { return computeHammingDistance(zeros, ones, 4, shift); });
  }
  pairs.expect("no words behind null", "0", [&] { return computeHammingDistance(nullptr, nullptr, 0, 1); });
}

TEST(BadInput, FBMValidationParams) {
  BadInput pairs("FBMValidationParams");
  for (const int mode : {3, -1, INT_MAX, INT_MIN})
    pairs.expect("mode " + std::to_string(mode), "ratio alone; wrong mode " + std::to_string(mode), [&] {
      alignas(FBMValidationParams) unsigned char storage[sizeof(FBMValidationParams)], expected[sizeof storage];
      std::memset(storage, 0x5a, sizeof storage);
      std::memset(expected, 0x5a, sizeof expected);
      const float ratio = 0.8f;
      std::memcpy(expected + offsetof(FBMValidationParams, ratio), &ratio, sizeof ratio);
      new (storage) FBMValidationParams(static_cast<FBMFilterMode>(mode));
      return std::memcmp(storage, expected, sizeof storage) == 0 ? "ratio alone" : "other fields";
    });
}

std::string text(const SVec2d& p) {
  std::ostringstream stream;
  stream << p.x << ", " << p.y;
  return stream.str();
}

TEST(BadInput, FeaturePrediction) {
  FeaturePrediction track;
  track.update({1, 1}, 10);
  track.update({3, 1}, 20);
  BadInput pairs("FeaturePrediction");
  const auto history = [&track] {
    const SVec2d at20 = track.predictPosition(20), at30 = track.predictPosition(30);
    return std::vector<double>{at20.x, at20.y, at30.x, at30.y};
  };
  pairs.keep(history);
  for (const SVec2d& bad : {SVec2d(-1, 0), SVec2d(0, -1), SVec2d(std::nextafter(1e6, 2e6), 5),
                            SVec2d(7, std::nextafter(1e6, 2e6)), SVec2d(nan, 0), SVec2d(0, nan), SVec2d(infinite, 1)})
    pairs.expect("update, position " + text(bad), "done", [&] { track.update(bad, 20); });
  pairs.expect("update, time 0", "done", [&] { track.update({5, 5}, 0); });
  pairs.expect("update, erased where nothing is", "done", [&] { track.update({0, 0}, 15); });
  pairs.expect("update by a matrix", "done", [&] { track.update(cv::Mat::ones(1, 2, CV_64F), 20); });

  const FeaturePrediction none;
  pairs.expect("prediction out of no positions", "0, 0; 0, 0; 00", [&] {
    return text(none.predictPosition(7)) + "; " + text(none.predictSpeed(7)) + "; " +
           std::to_string(none.predictable(7)) + std::to_string(none.predictableSpeed(7));
  });
  FeaturePrediction close;
  for (const std::uint64_t back : {3, 2, 1}) close.update({static_cast<double>(back), 1}, UINT64_MAX - back);
  pairs.expect("times that doubles cannot tell apart", "true",
               [&] { return !std::isfinite(close.predictPosition(5).x); });
}

TEST(BadInput, lsq) {
  using Doubles = std::vector<double>;
  constexpr unsigned plain = 0, robust = 1;
  const Doubles a{1, 2, 3, 4, 5, 6}, b{1, 2, 4};
  Doubles x{7, 8};
  Lsq solver;
  ASSERT_EQ(solver.lsq(a.data(), b.data(), x.data(), 3, 2, robust, 3.5, 0.0), 0);
  BadInput pairs("Lsq::lsq");
  const auto figures = [&] {
    return Doubles{solver.rms(), double(solver.outliers()), double(solver.outlier().size())};
  };
  pairs.keep(a, b, x, figures);
  struct System {
    const char* defect;
    const double *a, *b;
    double* x;
    int rows, cols;
    const char* outcome = "27";
  };
  for (const System& s : {
           System{"null A", nullptr, b.data(), x.data(), 3, 2},
           System{"null b", a.data(), nullptr, x.data(), 3, 2},
           System{"null x", a.data(), b.data(), nullptr, 3, 2},
           System{"no columns", a.data(), b.data(), x.data(), 3, 0},
           System{"least columns", a.data(), b.data(), x.data(), 3, INT_MIN},
           System{"no rows", a.data(), b.data(), x.data(), 0, 1},
           System{"rows below columns", a.data(), b.data(), x.data(), 1, 2},
           System{"more numbers than fit any memory", a.data(), b.data(), x.data(), INT_MAX, INT_MAX, "bad_alloc"},
       })
    for (const unsigned mode : {plain, robust})
      pairs.expect(std::string(s.defect) + ", mode " + std::to_string(mode), s.outcome,
                   [&] { return solver.lsq(s.a, s.b, s.x, s.rows, s.cols, mode, 3.5, 0.0); });
  for (const auto& [mode, threshold] : {std::pair(robust, 0.999), {robust, -infinite}, {2u, 3.5}, {UINT_MAX, 3.5}})
    pairs.expect("mode " + std::to_string(mode) + ", threshold " + std::to_string(threshold), "27",
                 [&, mode = mode, threshold = threshold] {
                   return solver.lsq(a.data(), b.data(), x.data(), 3, 2, mode, threshold, 0.0);
                 });

  for (const double bad : {nan, infinite, -infinite})
    for (std::size_t place = 0; place < 9; ++place)
      for (const unsigned mode : {plain, robust}) {
        Doubles system = a, side = b;
        (place < 6 ? system[place] : side[place - 6]) = bad;
        pairs.expect(std::to_string(bad) + " at " + std::to_string(place) + ", mode " + std::to_string(mode),
                     mode == robust ? "0, largest rms" : "0, rms 0", [&] {
                       Lsq fresh;
                       const int code = fresh.lsq(system.data(), side.data(), x.data(), 3, 2, mode, 3.5, 0.0);
                       return std::to_string(code) + (fresh.rms() == DBL_MAX ? ", largest rms"
                                                      : fresh.rms() == 0     ? ", rms 0"
                                                                             : ", another rms");
                     });
      }
}

TEST(BadInput, lsqWeights) {
  const std::vector<double> residuals{2, -2, 2};
  std::vector<double> weights{7, 7, 7};
  BadInput pairs("Lsq::lsqWeights");
  pairs.keep(residuals, weights);
  pairs.expect("null residuals", "27", [&] { return Lsq::lsqWeights(nullptr, weights.data(), 3, 1.0, 0.0); });
  pairs.expect("null weights", "27", [&] { return Lsq::lsqWeights(residuals.data(), nullptr, 3, 1.0, 0.0); });
  for (const int n : {0, INT_MIN})
    pairs.expect(std::to_string(n) + " residuals", "27",
                 [&] { return Lsq::lsqWeights(residuals.data(), weights.data(), n, 1.0, 0.0); });
  for (const auto& [defect, residual, threshold, sum] : {std::tuple("all beyond the scale", 2.0, 1.0, nan),
                                                         {"a residual that is no number", nan, 3.5, nan},
                                                         {"threshold 0", 5.0, 0.0, 3.0},
                                                         {"threshold below 0", 5.0, -3.5, 3.0}}) {
    const double given[] = {residual, -2, 2};
    pairs.expect(defect, "0, sum " + std::to_string(sum), [&, threshold = threshold] {
      double found[3];
      const int code = Lsq::lsqWeights(given, found, 3, threshold, 0.0);
      return std::to_string(code) + ", sum " + std::to_string(std::abs(found[0] + found[1] + found[2]));
    });
  }
}

TEST(BadInput, MotionEstimate) {
  using Points = std::vector<SVec2d>;
  const Points five{{10, 20}, {300, 40}, {250, 260}, {30, 210}, {120, 90}}, four(five.begin(), five.begin() + 4);
  const Points equal(8, SVec2d(5, 5));
  BadInput pairs("MotionEstimate::estimate");
  const auto outcome = [](const MotionEstimate& motion) {
    const MotionEstimate none;
    const bool unset = motion.meanResidual == 1000.0 && motion.meanInlierResidual == 1000.0 && motion.points == 0 &&
                       motion.translation == 0.0 && std::equal(motion.matrix, motion.matrix + 9, none.matrix);
    const bool identity =
        motion.apply(SVec2d(3.5, -2)) == SVec2d(3.5, -2) && motion.apply(cv::Vec2f(3.5f, -2)) == cv::Vec2f(3.5f, -2);
    return motion.isValid() ? "a motion" : unset && identity ? "no motion" : "half a motion";
  };
  const auto none = [&](const std::string& defect, const Points& from, const Points& to,
                        const std::vector<double>& weights = {}) {
    pairs.expect(
        defect, "no motion", [&] { return outcome(MotionEstimate::estimate(from, to, weights)); }, from, to, weights);
    pairs.expect(
        defect + ", centre given", "no motion",
        [&] { return outcome(MotionEstimate::estimate(from, to, weights, SVec2d(1, 2))); }, from, to);
  };
  none("no pairs", {}, {});
  none("four pairs", four, four);
  none("lists that differ", five, four);
  none("lists that differ, the other way round", four, five);
  none("four pairs and one weight", four, four, {1});
  none("equal points", equal, equal);
  none("no weight anywhere", five, five, {0, 0, 0, 0, 0});
  for (const double bad : {nan, infinite, 1e200}) {
    Points spoilt = five;
    spoilt[2].y = bad;
    none(std::to_string(bad) + " in the second list", five, spoilt);
    none(std::to_string(bad) + " in the first list", spoilt, five);
    none(std::to_string(bad) + " as weight", five, five, {1, 1, bad * bad, 1, 1});
  }
  const std::vector<cv::Vec2f> floats(5);
  for (const std::size_t count : {1u, 4u, 6u}) {
    const std::vector<double> weights(count, 1.0);
    const std::string name = std::to_string(count) + " weights", range = " given, none or 5 expected",
                      expected = refused + "MotionEstimate::estimate: weights: " + name + range;
    pairs.expect(name, expected, [&] { MotionEstimate::estimate(five, five, weights); });
    pairs.expect(name + " of floats", expected, [&] { MotionEstimate::estimate(floats, floats, weights); });
    pairs.expect(name + ", centre given", expected,
                 [&] { MotionEstimate::estimate(five, five, weights, SVec2d(0, 0)); });
  }
  // Whatever comes out of a degenerate fit: it ends, and it is not half a motion.
  Points line, far;
  for (int i = 0; i < 12; ++i) {
    line.emplace_back(10.0 * i, 20.0 * i + 3.0);
    far.emplace_back(1e30 * (i % 4), 1e30 * (i / 4));
  }
  for (const auto& [name, points] : {std::pair("points on a line", &line), {"points far away", &far}})
    pairs.expect(name, "whole", [&, points = points] {
      const MotionEstimate motion = MotionEstimate::estimate(*points, *points, {});
      return std::isnan(motion.deviation) || outcome(motion) == std::string("half a motion") ? "half" : "whole";
    });
  pairs.expect("null matrix", "3, 4", [] { return text(MotionEstimate::apply(nullptr, SVec2d(3, 4))); });
}

}  // namespace
