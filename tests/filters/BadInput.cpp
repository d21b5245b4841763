#include <MirelAlgorithms/filters/AccelIntegrator.h>
#include <MirelAlgorithms/filters/Butterworth.h>
#include <MirelAlgorithms/filters/MayhonyAHRS.h>
#include <MirelAlgorithms/filters/SavitzkyGolay.h>
#include <support/BadInput.h>

#include <climits>
#include <cmath>

#include "SameBits.h"

namespace MirelAlgorithms {
namespace {

using Floats = std::vector<float>;
using Series = std::vector<double>;

const std::pair<const char*, float> notFinite[] = {{"nan", NAN}, {"inf", INFINITY}, {"-inf", -INFINITY}};

template <class Filter>
class BadSamples : public testing::Test {};
using Filters = testing::Types<Butterworth, ButterworthBandpass>;
TYPED_TEST_SUITE(BadSamples, Filters);

TYPED_TEST(BadSamples, process) {
  const bool band = std::is_same_v<TypeParam, ButterworthBandpass>;
  std::vector<TypeParam> filters(3), none;
  Floats twelve(12, 1.0f), eleven(11, 7.0f), empty;
  BadInput pairs(band ? "ButterworthBandpass" : "Butterworth");
  const auto updates = [&] { return filters[0].updates() + filters[1].updates() + filters[2].updates(); };
  pairs.keep(updates, twelve, eleven);
  const std::string values = refused + "process: values: ", samples = refused + "process: samples: ";
  const auto one = [&](const Floats& from, Floats& to) { filters[0].process(from, to); };
  const auto all = [](std::vector<TypeParam>& each, const Floats& from, Floats& to) {
    TypeParam::process(each, from, to);
  };
  pairs.expect("one value too few", values + "11 elements given, 12 expected", [&] { one(twelve, eleven); });
  pairs.expect("one value too many", values + "12 elements given, 11 expected", [&] { one(eleven, twelve); });
  pairs.expect("no room", values + "0 elements given, 12 expected", [&] { one(twelve, empty); });
  pairs.expect("too few values of channels", values + "11 elements given, 12 expected",
               [&] { all(filters, twelve, eleven); });
  pairs.expect("half a moment", samples + "11 elements given, a multiple of the 3 channels expected",
               [&] { all(filters, eleven, eleven); });
  pairs.expect("samples of no channels", samples + "11 elements given, a multiple of the 0 channels expected",
               [&] { all(none, eleven, eleven); });
  pairs.expect("no samples of no channels", "done", [&] { all(none, empty, empty); });
  pairs.expect("no samples", "done", [&] { all(filters, empty, empty); });

  // A bad sample stays until `reset`, and no longer.
  const Floats good = Stream<float>(44, false).series(700);
  Floats expected(700);
  TypeParam().process(good, expected);
  for (const auto& [name, bad] : notFinite)
    pairs.expect(name, "spoils all, reset heals", [&, bad = bad] {
      TypeParam filter;
      Floats found(700);
      filter.process(Floats(600, 1.0f), std::span(found).first(600));
      filter.update(bad);
      filter.process(good, found);
      if (!std::all_of(found.begin(), found.end(), [](float v) { return std::isnan(v); })) return "heals by itself";
      filter.reset();
      filter.process(good, found);
      return found == expected && filter.updates() == 700 ? "spoils all, reset heals" : "stays spoilt";
    });
}

TEST(BadInput, Butterworth) {
  BadInput pairs("Butterworth::Butterworth");
  for (const int type : {7, 2, -1, INT_MAX})
    pairs.expect("pass type " + std::to_string(type), "silent", [&] {
      Floats values(600, 1.0f);
      Butterworth(5.0f, 100, static_cast<Butterworth::PassType>(type), 1.14f).process(Floats(600, 3.0f), values);
      return values == Floats(600, 0.0f) ? "silent" : "not silent";
    });
  // Bad designs are taken as they are; the first 500 outputs are withheld all the same.
  struct Design {
    const char* defect;
    float frequency;
    int rate;
    float resonance;
    const char* highpass;
  };
  for (const Design& d :
       {Design{"rate 0", 5, 0, 1.14f, "no number"}, Design{"frequency 0", 0, 100, 1.14f, "finite"},
        Design{"frequency nan", NAN, 100, 1.14f, "no number"},
        Design{"frequency inf", INFINITY, 100, 1.14f, "no number"}, Design{"resonance nan", 5, 100, NAN, "no number"},
        Design{"resonance inf", 5, 100, INFINITY, "no number"}})
    pairs.expect(d.defect, d.highpass, [&] {
      Floats values(501, 1.0f);
      Butterworth(d.frequency, d.rate, Butterworth::Highpass, d.resonance).process(Floats(501, 3.0f), values);
      if (std::any_of(values.begin(), values.end() - 1, [](float v) { return v != 0.0f; })) return "not withheld";
      return std::isnan(values.back()) ? "no number" : std::isfinite(values.back()) ? "finite" : "infinite";
    });
}

TEST(BadInput, AccelIntegrator) {
  BadInput pairs("AccelIntegrator::update");
  const cv::Vec3f one(1, 1, 1);
  for (const auto& [name, bad] : notFinite)
    for (const bool asTime : {false, true})
      pairs.expect(std::string(name) + (asTime ? " as time step" : " in x"),
                   asTime ? "no axis is finite, reset heals" : "y and z are finite, reset heals", [&, bad = bad] {
                     AccelIntegrator integrator(bad);
                     integrator.update(asTime ? one : cv::Vec3f(bad, 1, 1), asTime ? bad : 0.5f);
                     integrator.update(one, 0.5f);
                     int finite = 0;
                     for (int i = 0; i < 3; ++i)
                       finite += std::isfinite(integrator.speed()[i]) && std::isfinite(integrator.position()[i]);
                     integrator.reset();
                     integrator.update(one, 0.5f);
                     const bool healed = integrator.speed() == one * 0.5f && integrator.position() == one * 0.25f;
                     return std::string(finite == 0   ? "no axis is finite"
                                        : finite == 2 ? "y and z are finite"
                                                      : "others") +
                            (healed ? ", reset heals" : "");
                   });
}

TEST(BadInput, MayhonyAHRS) {
  using Vec3 = cv::Vec3f;
  struct Row {
    const char* defect;
    Vec3 gyro, accel, motion;
    float dt;
    bool stays;
  };
  const Vec3 still, moving(1, 0, 0), up(0, 0, 1);
  const float nan = NAN, inf = INFINITY;
  BadInput pairs("MayhonyAHRS::update");
  for (const Row& row : {
           Row{"rate nan", {nan, 0, 0}, up, moving, 0.01f, false},
           Row{"rate inf", {inf, 0, 0}, up, moving, 0.01f, false},
           Row{"time nan", moving, up, moving, nan, false},
           Row{"time inf", moving, up, moving, inf, false},
           Row{"acceleration nan", still, {nan, 0, 0}, moving, 0.01f, true},
           Row{"acceleration inf", still, {inf, 0, 0}, moving, 0.01f, true},
           Row{"motion nan is movement", {nan, 0, 0}, up, {nan, 0, 0}, 0.01f, false},
           Row{"all nan, standing still", {nan, nan, nan}, {nan, nan, nan}, still, nan, true},
           Row{"no acceleration", still, still, moving, 0.01f, true},
           Row{"denormal acceleration", still, {1e-44f, 0, 0}, moving, 0.0f, true},
           Row{"time 0", moving, up, moving, 0.0f, true},
       })
    pairs.expect(row.defect, row.stays ? "a unit quaternion, reset heals" : "no number, reset heals", [&] {
      MayhonyAHRS filter, fresh;
      filter.update(row.gyro, row.accel, row.motion, row.dt);
      const cv::Vec4f q = filter.value();
      const bool unit = std::abs(cv::norm(q) - 1.0) < 1e-6;
      filter.reset();
      for (MayhonyAHRS* each : {&filter, &fresh}) each->update(moving, up, moving, 0.01f);
      return std::string(unit                      ? "a unit quaternion"
                         : std::isnan(cv::norm(q)) ? "no number"
                                                   : "others") +
             (filter.value() == fresh.value() ? ", reset heals" : "");
    });
}

TEST(BadInput, sgCubicSmoother) {
  BadInput pairs("sgCubicSmoother");
  for (const int window : {4, 6, 27, 3, 1, 0, -5, 24, INT_MAX, INT_MIN}) {
    Series in(100, 1.0), out{1.0, 2.0, 3.0};
    pairs.expect(
        "window " + std::to_string(window), "false", [&] { return sgCubicSmoother(in, out, window); }, in, out);
  }
  for (int window = 5; window <= 25; window += 2)
    for (const std::size_t samples : {std::size_t{0}, std::size_t{1}, static_cast<std::size_t>(window) / 2 + 1}) {
      Series in(samples, 1.0), out{1.0, 2.0, 3.0};
      const std::string name = std::to_string(samples) + " samples, window " + std::to_string(window);
      pairs.expect(
          name, "false", [&] { return sgCubicSmoother(in, out, window); }, in, out);
      if (samples > 1)
        pairs.expect(
            name + ", in place", "false", [&] { return sgCubicSmoother(in, in, window); }, in);
    }
  for (const auto& [name, bad] : notFinite) {
    Series in(50, 1.0);
    in[20] = bad;
    pairs.expect(
        name, "spoils its windows alone",
        [&] {
          Series out;
          sgCubicSmoother(in, out, 9);
          for (int i = 0; i < 50; ++i)
            if (std::isfinite(out[i]) == (std::abs(i - 20) <= 4)) return "others";
          return "spoils its windows alone";
        },
        in);
  }
  pairs.expect("input is the output", "true", [] {
    Series in = Stream<double>(3, false).series(60), out;
    sgCubicSmoother(in, out, 7);
    sgCubicSmoother(in, in, 7);
    return in == out;
  });
}

}  // namespace
}  // namespace MirelAlgorithms
