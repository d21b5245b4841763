#include "tracking/PairNumbers.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace mirel {

const std::vector<PairNumber>& testNumbers() {
  static const std::vector<PairNumber> list = {
      {"in circle", "{:.0f}", [](const PairResult& p) { return p.counts.inCircle; }},
      {"in distance", "{:.0f}", [](const PairResult& p) { return p.counts.withinDistance; }},
      {"ratio test", "{:.0f}", [](const PairResult& p) { return p.counts.ratioTest; }},
      {"backward test", "{:.0f}", [](const PairResult& p) { return p.counts.backwardTest; }},
      {"matches", "{:.0f}", [](const PairResult& p) { return p.matchCount; }},
      {"inliers", "{:.0f}", [](const PairResult& p) { return p.inliers; }},
  };
  return list;
}

const std::vector<PairNumber>& motionNumbers() {
  static const std::vector<PairNumber> list = {
      {"shift, px", "{:.2f}", [](const PairResult& p) { return std::hypot(p.motion.dx, p.motion.dy); }},
      {"rotation, deg", "{:.3f}", [](const PairResult& p) { return p.motion.rotation; }},
      {"scale", "{:.4f}", [](const PairResult& p) { return p.motion.scale; }},
  };
  return list;
}

std::vector<double> numbersOf(const std::vector<PairResult>& pairs, const PairNumber& number) {
  std::vector<double> values;
  values.reserve(pairs.size());
  for (const PairResult& pair : pairs) values.push_back(number.of(pair));
  return values;
}

std::vector<PairResult> movingPairs(const std::vector<PairResult>& pairs) {
  std::vector<PairResult> moving;
  std::copy_if(pairs.begin(), pairs.end(), std::back_inserter(moving), [](const auto& p) { return p.motion.valid; });
  return moving;
}

double inlierShare(const PairResult& pair) {
  return pair.matchCount == 0 ? 0 : static_cast<double>(pair.inliers) / pair.matchCount;
}

std::optional<PredictionGain> totalGain(const std::vector<PairResult>& pairs) {
  std::optional<PredictionGain> total;
  std::vector<double> errors, errorsOfStay;
  for (const PairResult& pair : pairs) {
    if (!pair.prediction) continue;
    if (!total) total.emplace();
    total->matches += pair.prediction->matches;
    total->matchesWithout += pair.prediction->matchesWithout;
    total->tracked += pair.prediction->tracked;
    if (pair.prediction->tracked == 0) continue;  // no errors
    errors.push_back(pair.prediction->error);
    errorsOfStay.push_back(pair.prediction->errorOfStay);
  }
  if (!total) return total;
  total->error = median(std::move(errors));
  total->errorOfStay = median(std::move(errorsOfStay));
  return total;
}

std::string pixels(double value) { return std::isnan(value) ? "-" : fmt::format("{:.2f}", value); }

std::string describeMotion(const ImageMotion& motion) {
  if (!motion.valid) return "none found";
  return fmt::format("{:.2f} px (dx {:.2f}, dy {:.2f}), {:.3f} deg, scale {:.4f}", std::hypot(motion.dx, motion.dy),
                     motion.dx, motion.dy, motion.rotation, motion.scale);
}

double median(std::vector<double> values) {
  if (values.empty()) return std::numeric_limits<double>::quiet_NaN();
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

Spread::Spread(std::vector<double> values, const char* format) {
  if (values.empty()) return;
  const auto text = [&](double value) { return fmt::format(fmt::runtime(format), value); };
  const auto [low, high] = std::minmax_element(values.begin(), values.end());
  if (*low != *high) range = text(*low) + " to " + text(*high);
  median = text(mirel::median(std::move(values)));
}

std::string Spread::text() const { return range.empty() ? median : median + " (" + range + ")"; }

}  // namespace mirel
