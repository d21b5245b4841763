#include "inertial/ImuEstimate.h"

#include "Errors.h"
#include "inertial/Rotation.h"

#include <MirelAlgorithms/filters/AccelIntegrator.h>
#include <MirelAlgorithms/filters/Butterworth.h>
#include <MirelAlgorithms/filters/MayhonyAHRS.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace mirel {

using MirelAlgorithms::AccelIntegrator;
using MirelAlgorithms::ButterworthBandpass;
using MirelAlgorithms::MayhonyAHRS;

namespace {

float stepTo(const std::vector<double>& seconds, std::size_t i) {
  return i == 0 ? 0.0f : static_cast<float>(seconds[i] - seconds[i - 1]);
}

void followAttitude(const ImuRecording& recording, float threshold, ImuEstimate& result) {
  MayhonyAHRS filter(0.6f, 0.15f, threshold);
  bool aligned = false;
  for (std::size_t i = 0; i < recording.gyro.size(); ++i) {
    const cv::Vec3f &gyro = recording.gyro[i], &accel = recording.accel[i];
    const cv::Vec3f motion = aligned ? gyro : cv::Vec3f(2 * threshold, 0, 0);
    filter.update(gyro, accel, motion, stepTo(recording.time.seconds, i));
    aligned = aligned || cv::norm(accel) > 1e-3;
    result.attitude.push_back(filter.value());
    result.angles.push_back(filter.angles());
    result.gravity.push_back(filter.gravity());
    result.standstill.push_back(filter.standstill(gyro) ? 1 : 0);
  }
}

/// Standstills that last and during which the sensor feels gravity alone, nearly.
std::vector<char> findRests(const ImuRecording& recording, const std::vector<char>& standstill) {
  constexpr double shortest = 0.25;  // s
  const std::vector<double>& t = recording.time.seconds;
  std::vector<char> rest(t.size(), 0);
  const auto quiet = [&](std::size_t i) {
    return standstill[i] != 0 && std::abs(cv::norm(recording.accel[i]) / standardGravity - 1) < 0.1;
  };
  for (std::size_t begin = 0, end = 0; begin < t.size(); begin = end + 1) {
    for (end = begin; end < t.size() && quiet(end);) ++end;
    if (end > begin && t[end - 1] - t[begin] >= shortest) {
      std::fill(rest.begin() + static_cast<std::ptrdiff_t>(begin), rest.begin() + static_cast<std::ptrdiff_t>(end), 1);
    }
  }
  return rest;
}

double weightAtRest(const ImuRecording& recording, const std::vector<char>& rest) {
  double sum = 0;
  std::size_t count = 0;
  for (std::size_t i = 0; i < rest.size(); ++i) {
    if (rest[i] == 0) continue;
    sum += cv::norm(recording.accel[i]);
    ++count;
  }
  return count == 0 ? standardGravity : sum / static_cast<double>(count);
}

std::vector<cv::Vec3f> filterBand(const ImuRecording& recording, const ImuFilterOptions& options) {
  constexpr float resonance = 1.14f;  // the filter's own default
  const int rate = static_cast<int>(std::lround(Sampling(recording.time.seconds).rate()));
  const ButterworthBandpass filter(static_cast<float>(options.low), static_cast<float>(options.high), rate, resonance);
  std::array filters = {filter, filter, filter};
  std::vector<cv::Vec3f> filtered = recording.accel;
  const std::span values(filtered[0].val, 3 * filtered.size());
  ButterworthBandpass::process(filters, values, values);
  return filtered;
}

void integrate(const ImuRecording& recording, ImuEstimate& result) {
  AccelIntegrator integrator;
  cv::Vec3f start;
  for (std::size_t i = 0; i < recording.accel.size(); ++i) {
    if (result.rest[i] != 0) {
      start += integrator.position();
      integrator.reset();
    } else {
      const cv::Vec3d force = rotate(result.attitude[i], recording.accel[i]);
      integrator.update(cv::Vec3f(force - cv::Vec3d(0, 0, result.weight)), stepTo(recording.time.seconds, i));
    }
    result.speed.push_back(integrator.speed());
    result.position.push_back(start + integrator.position());
  }
}

}  // namespace

ImuFilterOptions fitBand(ImuFilterOptions options, double rate) {
  options.high = std::min(options.high, 0.45 * static_cast<double>(std::lround(rate)));
  if (options.low < options.high) return options;
  throw UsageError(
      fmt::format("--band: from {:.4g} Hz on is above what {:.4g} samples per second allow, less than "
                  "{:.4g} Hz expected",
                  options.low, rate, options.high));
}

ImuEstimate estimate(const ImuRecording& recording, const ImuFilterOptions& options) {
  ImuEstimate result;
  followAttitude(recording, options.standstill, result);
  result.rest = findRests(recording, result.standstill);
  result.weight = weightAtRest(recording, result.rest);
  result.filtered = filterBand(recording, options);
  integrate(recording, result);
  return result;
}

}  // namespace mirel
