/// Numbers of frame pairs, and what is typical of them over a sequence.
#pragma once

#include "tracking/PairResult.h"

#include <functional>
#include <string>
#include <vector>

namespace mirel {

/// One number of a pair under a label of its own.
struct PairNumber {
  const char* label;
  const char* format;  ///< of the number, for fmt
  std::function<double(const PairResult&)> of;
};

/// Features that are left after each test of matching, in order: the first one in the circle, the last one inliers.
const std::vector<PairNumber>& testNumbers();

/// Image shift, rotation and scale; of pairs whose motion is valid.
const std::vector<PairNumber>& motionNumbers();

std::vector<double> numbersOf(const std::vector<PairResult>& pairs, const PairNumber& number);

/// The pairs whose image motion is known.
std::vector<PairResult> movingPairs(const std::vector<PairResult>& pairs);

/// Share of the matches that agree with the image motion, 0 without matches.
double inlierShare(const PairResult& pair);

/// Of all pairs that were predicted: matches in sum, errors as medians over the pairs. Nothing without such a pair.
std::optional<PredictionGain> totalGain(const std::vector<PairResult>& pairs);

/// "0.61", "-" for NaN.
std::string pixels(double value);

/// "12.3 px (dx 11.9, dy -3.1), 0.42 deg, scale 1.003", or that there is no motion.
std::string describeMotion(const ImageMotion& motion);

/// The middle value, the upper one of an even number; NaN of none.
double median(std::vector<double> values);

/// Median and range as texts.
struct Spread {
  std::string median = "-";
  std::string range;  ///< "3 to 40"; empty when all values are equal

  Spread(std::vector<double> values, const char* format);

  /// "12 (3 to 40)".
  std::string text() const;
};

}  // namespace mirel
