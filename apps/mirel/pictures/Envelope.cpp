#include "pictures/Envelope.h"

#include <cmath>
#include <limits>
#include <utility>

namespace mirel {

namespace {

struct Extreme {
  std::size_t at = 0;
  double value = std::numeric_limits<double>::quiet_NaN();
};

void addExtremes(const std::vector<double>& values, std::size_t begin, std::size_t end, std::vector<double>& result) {
  Extreme low, high;
  for (std::size_t i = begin; i < end; ++i) {
    if (std::isnan(values[i])) continue;
    if (!(values[i] >= low.value)) low = {i, values[i]};
    if (!(values[i] <= high.value)) high = {i, values[i]};
  }
  if (low.at > high.at) std::swap(low, high);
  result.push_back(low.value);
  result.push_back(high.value);
}

}  // namespace

std::vector<double> envelope(const std::vector<double>& values, std::size_t parts) {
  const std::size_t size = values.size();
  if (size <= 2 * parts) return values;
  std::vector<double> result;
  for (std::size_t part = 0; part < parts; ++part) {
    addExtremes(values, size * part / parts, size * (part + 1) / parts, result);
  }
  return result;
}

std::vector<double> envelopeTimes(const std::vector<double>& times, std::size_t parts) {
  const std::size_t size = times.size();
  if (size <= 2 * parts) return times;
  std::vector<double> result;
  for (std::size_t part = 0; part < parts; ++part) {
    const std::size_t begin = size * part / parts, end = size * (part + 1) / parts;
    result.push_back(times[begin]);
    result.push_back(times[(begin + end) / 2]);
  }
  result.back() = times.back();
  return result;
}

}  // namespace mirel
