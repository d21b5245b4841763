#include "../Capabilities.h"

namespace MirelAlgorithms {
namespace {

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

}  // namespace

std::vector<Capability> filtersCapabilities() {
  return {
      {"filters_butterworth", butterworth},
      {"filters_bandpass", bandpass},
      {"filters_inertial", inertial},
      {"filters_series", smoothSeries},
  };
}

}  // namespace MirelAlgorithms
