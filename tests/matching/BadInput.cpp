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
    std::string outcome;
    void (*change)(Input&);
  };
  const std::string width0 =
      refused + "matchFeatures: descriptors1: width 0 given, at least one byte per descriptor expected";
  const auto type = [](const char* argument, const char* found) {
    return refused + "matchFeatures: " + argument + ": " + found + " given, CV_8UC1 expected";
  };
  std::vector<FBMatch> matches(3);
  std::vector<FBPrediction> predictions(7);
  BadInput pairs("matchFeatures");
  pairs.keep(matches, predictions);
  for (const Row& row : {
           Row{"no first frame", "false", [](Input& in) { in.keyPoints1.clear(), in.descriptors1.release(); }},
           Row{"no second frame", "false", [](Input& in) { in.keyPoints2.clear(), in.descriptors2.release(); }},
           Row{"no frames", "false", [](Input& in) { in = Input(); }},
           Row{"rows without key points", "false", [](Input& in) { in.keyPoints2.clear(); }},
           Row{"key points without rows", "false", [](Input& in) { in.descriptors2.release(); }},
           Row{"fewer rows than key points", "false", [](Input& in) { in.descriptors1 = in.descriptors1.row(0); }},
           Row{"more rows than key points", "false", [](Input& in) { in.keyPoints2.resize(1); }},
           Row{"other width", "false", [](Input& in) { in.descriptors1 = in.descriptors1.colRange(0, 127); }},
           Row{"other width and type", "false", [](Input& in) { in.descriptors2 = cv::Mat(2, 16, CV_32FC1); }},
           Row{"width 0 of one", "false", [](Input& in) { in.descriptors1 = cv::Mat(2, 0, CV_8UC1); }},
           Row{"width 0", width0, [](Input& in) { in.descriptors1 = in.descriptors2 = cv::Mat(2, 0, CV_8UC1); }},
           Row{"volumes", "false",
               [](Input& in) {
                 const int sizes[] = {2, 4, 4};
                 in.descriptors1 = in.descriptors2 = cv::Mat(3, sizes, CV_8UC1);
               }},
           Row{"signed", type("descriptors1", "CV_8SC1"),
               [](Input& in) { in.descriptors1 = cv::Mat(2, 128, CV_8SC1); }},
           Row{"16 bits", type("descriptors1", "CV_16UC1"),
               [](Input& in) { in.descriptors1 = cv::Mat(2, 128, CV_16UC1); }},
           Row{"floats", type("descriptors2", "CV_32FC1"),
               [](Input& in) { in.descriptors2 = cv::Mat(2, 128, CV_32FC1); }},
           Row{"three channels", type("descriptors2", "CV_8UC3"),
               [](Input& in) { in.descriptors2 = cv::Mat(2, 128, CV_8UC3); }},
       }) {
    Input in = inputWithOnes({0, 500}, {0, 500});
    row.change(in);
    pairs.expect(
        row.defect, row.outcome,
        [&] {
          return matchFeatures(in.keyPoints1, in.descriptors1, in.keyPoints2, in.descriptors2, in.params, matches,
                               predictions);
        },
        in.descriptors1, in.descriptors2);
  }

  struct Taken {
    const char* defect;
    const char* outcome;
    void (*change)(Input&);
  };
  for (const Taken& row : {
           Taken{"nothing", "true, 2 matches", [](Input&) {}},
           Taken{"less than a word", "true, 0 matches",
                 [](Input& in) {
                   in.descriptors1 = in.descriptors1.colRange(0, 7);
                   in.descriptors2 = in.descriptors2.colRange(0, 7);
                   in.params.minMatches = 0;
                 }},
           Taken{"views with odd row starts", "true, 2 matches",
                 [](Input& in) {
                   in.descriptors1 = oddView(in.descriptors1);
                   in.descriptors2 = oddView(in.descriptors2);
                 }},
           Taken{"61 bytes in odd views", "true, 2 matches",
                 [](Input& in) {
                   in.descriptors1 = oddView(in.descriptors1.colRange(0, 61));
                   in.descriptors2 = oddView(in.descriptors2.colRange(0, 61));
                 }},
           Taken{"positions that are no numbers", "true, 2 matches",
                 [](Input& in) {
                   for (cv::KeyPoint& k : in.keyPoints1) k.pt = {notANumber, notANumber};
                 }},
           Taken{"positions without end", "false, 0 matches",
                 [](Input& in) {
                   for (cv::KeyPoint& k : in.keyPoints1) k.pt = {infinity, 0};
                   in.params.minMatches = -1;
                 }},
           Taken{"radius that is no number", "true, 2 matches",
                 [](Input& in) { in.params.searchRadiusSq = notANumber; }},
           Taken{"radius below 0", "true, 0 matches", [](Input& in) { in.params.searchRadiusSq = -1; }},
           Taken{"ratio that is no number", "true, 2 matches", [](Input& in) { in.params.ratio = notANumber; }},
           Taken{"ratio 0", "true, 2 matches", [](Input& in) { in.params.ratio = 0; }},
           Taken{"no distance allowed", "true, 2 matches", [](Input& in) { in.params.maxDistance = 0; }},
           Taken{"negative bound of pairs", "false, 2 matches", [](Input& in) { in.params.minMatches = INT_MIN; }},
           Taken{"one point each", "false, 1 matches",
                 [](Input& in) {
                   in.keyPoints1.resize(1), in.keyPoints2.resize(1);
                   in.descriptors1 = in.descriptors1.row(0), in.descriptors2 = in.descriptors2.row(0);
                 }},
           Taken{"other number of predictions", "true, 2 matches",
                 [](Input& in) {
                   in.predictions.resize(5, {-1e30f, 0, 0, 2});
                 }},
           Taken{"predictions that are no numbers", "true, 2 matches",
                 [](Input& in) {
                   in.predictions.resize(2, {notANumber, notANumber, notANumber, INT_MIN});
                 }},
       }) {
    Input in = inputWithOnes({0, 50}, {0, 50});
    row.change(in);
    pairs.expect(
        row.defect, row.outcome,
        [&] {
          const Output out = run(in);
          return std::string(out.enough ? "true, " : "false, ") + std::to_string(out.matches.size()) + " matches";
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
  const std::uint64_t zeros[5] = {}, ones[5] = {~0ull, ~0ull, ~0ull, ~0ull, ~0ull};
  const auto at = [](const std::uint64_t* words, std::size_t bytes) {
    return reinterpret_cast<const std::uint64_t*>(reinterpret_cast<const char*>(words) + bytes);
  };
  const auto as128 = [](const std::uint64_t* words) { return reinterpret_cast<const __m128i*>(words); };
  BadInput pairs("computeHammingDistance");
  pairs.keep(zeros, ones);
  for (const unsigned shift : {16u, 31u, 32u, 33u, 63u, 64u, 65u, ~0u}) {
    const std::string name = "shift " + std::to_string(shift);
    pairs.expect(name + " of 64 bits", "0", [&] { return computeHammingDistance64(zeros, ones, shift); });
    pairs.expect(name + " of 128 bits", "0",
                 [&] { return computeHammingDistance128(as128(zeros), as128(ones), shift); });
    pairs.expect(name + " of 256 bits", "0", [&] { return computeHammingDistance(zeros, ones, 4, shift); });
  }
  pairs.expect("sum of 2^16: the low bits", "0", [&] { return computeHammingDistance(zeros, ones, 4, 8); });
  for (const std::size_t bytes : {1u, 3u, 7u}) {
    const std::string name = std::to_string(bytes) + " bytes off the alignment, ";
    pairs.expect(name + "64 bits", "128",
                 [&] { return computeHammingDistance64(at(zeros, bytes), at(ones, bytes), 1); });
    pairs.expect(name + "128 bits", "256",
                 [&] { return computeHammingDistance128(as128(at(zeros, bytes)), as128(at(ones, bytes)), 1); });
    pairs.expect(name + "256 bits", "512",
                 [&] { return computeHammingDistance(at(zeros, bytes), at(ones, bytes), 4, 1); });
  }
  pairs.expect("no words", "0", [&] { return computeHammingDistance(zeros, ones, 0, 1); });
  pairs.expect("no words behind null", "0", [&] { return computeHammingDistance(nullptr, nullptr, 0, 1); });
  pairs.expect("both the same memory", "0", [&] { return computeHammingDistance(ones, ones, 5, 1); });
}

TEST(BadInput, FBMValidationParams) {
  BadInput pairs("FBMValidationParams");
  for (const int mode : {7, 3, -1, INT_MAX, INT_MIN})
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
  struct Bad {
    const char* defect;
    SVec2d position;
    std::uint64_t time = 20;
  };
  for (const Bad& bad : {Bad{"x below 0", {-1, 5}}, Bad{"y below 0", {5, -1}}, Bad{"x too large", {2e6, 5}},
                         Bad{"y too large", {5, 2e6}}, Bad{"x 0, y below 0", {0, -1}}, Bad{"x below 0, y 0", {-1, 0}},
                         Bad{"x no number", {nan, 5}}, Bad{"y no number", {5, nan}}, Bad{"y no number, x 0", {0, nan}},
                         Bad{"x no number, y 0", {nan, 0}}, Bad{"x infinite", {infinite, 1}},
                         Bad{"x just too large", {std::nextafter(1e6, 2e6), 1}}, Bad{"time 0", {5, 5}, 0},
                         Bad{"erased where nothing is", {0, 0}, 15}})
    pairs.expect(std::string("update, ") + bad.defect, "done", [&] { track.update(bad.position, bad.time); });
  pairs.expect("update by a matrix", "done", [&] { track.update(cv::Mat::ones(1, 2, CV_64F), 20); });
  pairs.expect("update by an empty matrix", "done", [&] { track.update(cv::Mat(), 0); });

  constexpr std::uint64_t last = UINT64_MAX;
  const auto ofSize = [](double speed) { return speed < -1.8e18 && speed > -1.9e18; };
  pairs.expect("speed at 0: before it comes 2^64 - 1", "true", [&] { return ofSize(track.predictSpeed(0).x); });
  pairs.expect("speed at 2^64 - 1: after it comes 0", "true", [&] { return ofSize(track.predictSpeed(last).x); });
  pairs.expect("predictable at 0", "false", [&] { return track.predictable(0); });
  pairs.expect("speed predictable at 0", "false", [&] { return track.predictableSpeed(0); });
  pairs.expect("speed predictable at 2^64 - 1", "false", [&] { return track.predictableSpeed(last); });
  FeaturePrediction none, one, close;
  one.update({5, 5}, 7);
  for (const std::uint64_t time : {last - 2, last - 1, last}) close.update({static_cast<double>(time & 7), 1}, time);
  for (const auto& [name, few] : {std::pair("no positions", &none), {"one position", &one}}) {
    pairs.expect(std::string("position out of ") + name, "0, 0", [few = few] { return text(few->predictPosition(7)); });
    pairs.expect(std::string("speed out of ") + name, "0, 0", [few = few] { return text(few->predictSpeed(7)); });
    pairs.expect(std::string("predictable out of ") + name, "false", [few = few] { return few->predictable(7); });
  }
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
  pairs.keep(a, b, x);
  struct Row {
    const char* defect;
    const double *a, *b;
    double* x;
    int rows, cols;
    unsigned mode;
    double threshold;
    const char* outcome = "27";
  };
  for (const Row& row : {
           Row{"null A", nullptr, b.data(), x.data(), 3, 2, plain, 3.5},
           Row{"null A, robust", nullptr, b.data(), x.data(), 3, 2, robust, 3.5},
           Row{"null b", a.data(), nullptr, x.data(), 3, 2, plain, 3.5},
           Row{"null b, robust", a.data(), nullptr, x.data(), 3, 2, robust, 3.5},
           Row{"null x", a.data(), b.data(), nullptr, 3, 2, plain, 3.5},
           Row{"null x, robust", a.data(), b.data(), nullptr, 3, 2, robust, 3.5},
           Row{"no columns", a.data(), b.data(), x.data(), 3, 0, robust, 3.5},
           Row{"negative columns", a.data(), b.data(), x.data(), 3, -1, plain, 3.5},
           Row{"least columns", a.data(), b.data(), x.data(), 3, INT_MIN, robust, 3.5},
           Row{"no rows", a.data(), b.data(), x.data(), 0, 1, plain, 3.5},
           Row{"negative rows", a.data(), b.data(), x.data(), -3, 1, robust, 3.5},
           Row{"rows below columns", a.data(), b.data(), x.data(), 1, 2, robust, 3.5},
           Row{"rows below columns, plain", a.data(), b.data(), x.data(), 1, 2, plain, 3.5},
           Row{"threshold below 1", a.data(), b.data(), x.data(), 3, 2, robust, 0.999},
           Row{"threshold 0", a.data(), b.data(), x.data(), 3, 2, robust, 0.0},
           Row{"threshold -infinity", a.data(), b.data(), x.data(), 3, 2, robust, -infinite},
           Row{"mode 2", a.data(), b.data(), x.data(), 3, 2, 2, 3.5},
           Row{"mode -1", a.data(), b.data(), x.data(), 3, 2, UINT_MAX, 3.5},
           Row{"more numbers than fit any memory", a.data(), b.data(), x.data(), INT_MAX, INT_MAX, plain, 0.0,
               "bad_alloc"},
           Row{"the same, robust", a.data(), b.data(), x.data(), INT_MAX, INT_MAX, robust, 3.5, "bad_alloc"},
       })
    pairs.expect(
        row.defect, row.outcome,
        [&] { return solver.lsq(row.a, row.b, row.x, row.rows, row.cols, row.mode, row.threshold, 0.0); }, figures);

  for (const auto& [name, bad] :
       {std::pair("nan", nan), {"inf", infinite}, {"-inf", -infinite}, {"squares overflow", 1e200}})
    for (std::size_t place = 0; place < 9; ++place)
      for (const unsigned mode : {plain, robust}) {
        Doubles system = a, side = b;
        (place < 6 ? system[place] : side[place - 6]) = bad;
        const std::string x0 = std::isfinite(bad) ? "finite"
                               : mode == robust   ? "kept, rms 1.79769e+308"
                                                  : "kept, rms 0";
        pairs.expect(std::string(name) + " at " + std::to_string(place) + (mode == robust ? ", robust" : ""),
                     "0, " + x0, [&, bad = bad] {
                       Lsq fresh;
                       Doubles solution = x;
                       std::ostringstream stream;
                       stream << fresh.lsq(system.data(), side.data(), solution.data(), 3, 2, mode, 3.5, 0.0) << ", ";
                       if (!std::isfinite(bad))
                         stream << (solution == x ? "kept, rms " : "changed, rms ") << fresh.rms();
                       else
                         stream << (std::isfinite(solution[0]) && std::isfinite(solution[1]) ? "finite" : "not finite");
                       return stream.str();
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
  for (const int n : {0, -1, INT_MIN})
    pairs.expect(std::to_string(n) + " residuals", "27",
                 [&] { return Lsq::lsqWeights(residuals.data(), weights.data(), n, 1.0, 0.0); });
  struct Row {
    const char* defect;
    double residual, threshold;
    bool number;
  };
  for (const Row& row :
       {Row{"all beyond the scale", 2, 1.0, false}, Row{"a residual that is no number", nan, 3.5, false},
        Row{"threshold 0", 5, 0.0, true}, Row{"threshold below 0", 5, -3.5, true}})
    pairs.expect(row.defect, row.number ? "0, ones" : "0, no numbers", [&] {
      const double given[] = {row.residual, -2, 2};
      double found[3];
      const int code = Lsq::lsqWeights(given, found, 3, row.threshold, 0.0);
      const bool ones = found[0] == 1 && found[1] == 1 && found[2] == 1, none = std::isnan(found[0] + found[1]);
      return std::to_string(code) + (ones ? ", ones" : none ? ", no numbers" : ", others");
    });
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
  for (const auto& [name, bad] : {std::pair("nan", nan), {"inf", infinite}, {"1e200", 1e200}}) {
    Points spoilt = five;
    spoilt[2].y = bad;
    none(std::string(name) + " in the second list", five, spoilt);
    none(std::string(name) + " in the first list", spoilt, five);
    none(std::string(name) + " as weight", five, five, {1, 1, bad * bad, 1, 1});
  }
  const std::vector<cv::Vec2f> floats(5);
  for (const std::size_t count : {1u, 4u, 6u}) {
    const std::vector<double> weights(count, 1.0);
    const std::string expected = refused + "MotionEstimate::estimate: weights: " + std::to_string(count) +
                                 " weights given, none or 5 expected",
                      name = std::to_string(count) + " weights";
    pairs.expect(name, expected, [&] { return outcome(MotionEstimate::estimate(five, five, weights)); });
    pairs.expect(name + " of floats", expected,
                 [&] { return outcome(MotionEstimate::estimate(floats, floats, weights)); });
    pairs.expect(name + ", centre given", expected,
                 [&] { return outcome(MotionEstimate::estimate(five, five, weights, SVec2d(0, 0))); });
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
