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
  std::vector<TypeParam> filters(3), none;
  Floats twelve(12, 1.0f), eleven(11, 7.0f), empty;
  BadInput pairs(std::is_same_v<TypeParam, Butterworth> ? "Butterworth" : "ButterworthBandpass");
  const auto updates = [&] { return filters[0].updates() + filters[1].updates() + filters[2].updates(); };
  pairs.keep(updates, twelve, eleven);
  struct Row {
    const char* defect;
    std::vector<TypeParam>* channels;  ///< null: one filter alone
    Floats *samples, *values;
    std::string outcome;
  };
  const std::string values = refused + "process: values: ", samples = refused + "process: samples: 11 elements given, ";
  for (const Row& row : {
           Row{"one value too few", nullptr, &twelve, &eleven, values + "11 elements given, 12 expected"},
           Row{"one value too many", nullptr, &eleven, &twelve, values + "12 elements given, 11 expected"},
           Row{"too few values of channels", &filters, &twelve, &eleven, values + "11 elements given, 12 expected"},
           Row{"half a moment", &filters, &eleven, &eleven, samples + "a multiple of the 3 channels expected"},
           Row{"samples of no channels", &none, &eleven, &eleven, samples + "a multiple of the 0 channels expected"},
           Row{"no samples of no channels", &none, &empty, &empty, "done"},
           Row{"no samples", &filters, &empty, &empty, "done"},
       })
    pairs.expect(row.defect, row.outcome, [&] {
      if (row.channels)
        TypeParam::process(*row.channels, *row.samples, *row.values);
      else
        filters[0].process(*row.samples, *row.values);
    });

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
      const bool spoilt = std::all_of(found.begin(), found.end(), [](float v) { return std::isnan(v); });
      filter.reset();
      filter.process(good, found);
      const bool healed = found == expected && filter.updates() == 700;
      return std::string(spoilt ? "spoils all" : "heals by itself") + (healed ? ", reset heals" : "");
    });
}

TEST(BadInput, Butterworth) {
  BadInput pairs("Butterworth::Butterworth");
  for (const int type : {2, -1, INT_MAX})
    pairs.expect("pass type " + std::to_string(type), "silent", [&] {
      Floats values(600, 1.0f);
      Butterworth(5.0f, 100, static_cast<Butterworth::PassType>(type), 1.14f).process(Floats(600, 3.0f), values);
      return values == Floats(600, 0.0f) ? "silent" : "not silent";
    });
}

TEST(BadInput, AccelIntegrator) {
  BadInput pairs("AccelIntegrator::update");
  for (const auto& [name, bad] : notFinite)
    for (const bool asTime : {false, true})
      pairs.expect(std::string(name) + (asTime ? " as time step" : " in x"), asTime ? "0 finite axes" : "2 finite axes",
                   [&, bad = bad] {
                     AccelIntegrator integrator(bad);
                     integrator.update({asTime ? 1 : bad, 1, 1}, asTime ? bad : 0.5f);
                     integrator.update({1, 1, 1}, 0.5f);
                     int finite = 0;
                     for (int i = 0; i < 3; ++i)
                       finite += std::isfinite(integrator.speed()[i]) && std::isfinite(integrator.position()[i]);
                     return std::to_string(finite) + " finite axes";
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
  const Vec3 still, moving(1, 0, 0), up(0, 0, 1), noNumbers(NAN, NAN, NAN), endless(INFINITY, 0, 0);
  BadInput pairs("MayhonyAHRS::update");
  for (const Row& row : {
           Row{"rate inf", endless, up, moving, 0.01f, false},
           Row{"time nan", moving, up, moving, NAN, false},
           Row{"acceleration nan", still, noNumbers, moving, 0.01f, true},
           Row{"motion nan is movement", noNumbers, up, noNumbers, 0.01f, false},
           Row{"all nan, standing still", noNumbers, noNumbers, still, NAN, true},
           Row{"denormal acceleration", still, {1e-44f, 0, 0}, moving, 0.0f, true},
       })
    pairs.expect(row.defect, row.stays ? "a unit quaternion, reset heals" : "no number, reset heals", [&] {
      MayhonyAHRS filter, fresh;
      filter.update(row.gyro, row.accel, row.motion, row.dt);
      const double length = cv::norm(filter.value());
      const char* found = std::abs(length - 1.0) < 1e-6 ? "a unit quaternion" : std::isnan(length) ? "no number" : "";
      filter.reset();
      for (MayhonyAHRS* each : {&filter, &fresh}) each->update(moving, up, moving, 0.01f);
      return std::string(found) + (filter.value() == fresh.value() ? ", reset heals" : "");
    });
}

TEST(BadInput, sgCubicSmoother) {
  BadInput pairs("sgCubicSmoother");
  std::vector<std::pair<int, std::size_t>> cases;  // window and samples
  for (const int window : {4, 6, 27, 3, 0, -5, INT_MAX, INT_MIN}) cases.emplace_back(window, 100);
  for (const int window : {5, 7, 23, 25})
    for (const int samples : {0, 1, window / 2 + 1}) cases.emplace_back(window, samples);
  for (const auto& [window, samples] : cases)
    for (const bool inPlace : {false, true}) {
      Series in(samples, 1.0), other{1.0, 2.0, 3.0}, &out = inPlace ? in : other;
      pairs.expect(
          std::to_string(samples) + " samples, window " + std::to_string(window) + (inPlace ? ", in place" : ""),
          "false", [&, window = window] { return sgCubicSmoother(in, out, window); }, in, out);
    }
}

}  // namespace
}  // namespace MirelAlgorithms
