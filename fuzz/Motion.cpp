/// Image motion: figures and mapping that fit each other, also for hostile points; the same for both precisions of the
/// points and for every instruction set.
#include <MirelAlgorithms/matching/MotionEstimate.h>

#include <cmath>

#include "Check.h"

namespace {

using namespace MirelAlgorithms;
using Points = std::vector<cv::Vec2f>;

std::vector<double> numbersOf(const MotionEstimate& m) {
  std::vector<double> all(m.matrix, m.matrix + 9);
  all.insert(all.end(), {m.factor, m.translation, m.scale, m.rotation, m.deviation, m.meanResidual,
                         m.meanInlierResidual, 1.0 * m.points, 1.0 * m.outlierRows, m.center[0], m.center[1]});
  return all;
}

bool same(const MotionEstimate& a, const MotionEstimate& b) { return sameBits(numbersOf(a), numbersOf(b)); }

float coordinate(FuzzedDataProvider& data, bool hostile) {
  return hostile ? anyReal<float>(data) : static_cast<float>(data.ConsumeIntegralInRange(-800, 800)) / 4;
}

// Points that a motion moves, then errors.
void anyPairs(FuzzedDataProvider& data, Points& from, Points& to) {
  const std::size_t count = data.ConsumeIntegralInRange<std::size_t>(0, 24);
  const bool hostile = data.ConsumeIntegralInRange(0, 3) == 0, regular = data.ConsumeBool();
  const float dx = coordinate(data, hostile), turn = data.ConsumeFloatingPointInRange(-1.0f, 1.0f);
  for (std::size_t i = 0; i < count; ++i) {
    const cv::Vec2f p(coordinate(data, hostile), coordinate(data, hostile));
    cv::Vec2f q(p[0] - turn * p[1] + dx, turn * p[0] + p[1]);
    if (!regular || data.ConsumeIntegralInRange(0, 7) == 0) q = {coordinate(data, hostile), coordinate(data, hostile)};
    from.push_back(p);
    to.push_back(q);
  }
  if (data.ConsumeIntegralInRange(0, 15) == 0 && count > 0) to.pop_back();
}

std::vector<SVec2d> widened(const Points& points) {
  std::vector<SVec2d> wide;
  for (const cv::Vec2f& p : points) wide.emplace_back(p[0], p[1]);
  return wide;
}

void checkFigures(const MotionEstimate& motion, const std::vector<SVec2d>& from, const std::vector<SVec2d>& to) {
  if (!motion.isValid()) {
    MIREL_CHECK(same(motion, MotionEstimate()));
    return;
  }
  const auto count = static_cast<int>(from.size());
  MIREL_CHECK(count >= 5 && motion.points == count);
  MIREL_CHECK(motion.outlierRows >= 0 && 2 * count - motion.outlierRows >= 8);
  MIREL_CHECK(motion.translation >= 0 && !(motion.scale < 0) && !(std::abs(motion.rotation) > 3.1416));

  double sum = 0;
  for (std::size_t i = 0; i < from.size(); ++i) {
    const SVec2d there = motion.apply(from[i]);
    sum += std::hypot(there.x - to[i].x, there.y - to[i].y);
  }
  if (std::isfinite(sum)) MIREL_CHECK(std::abs(sum / count - motion.meanResidual) <= 1e-9 * (1 + sum));
}

}  // namespace

void feed(FuzzedDataProvider& data) {
  const SVec2d center(anyReal<double>(data), anyReal<double>(data));
  const bool weighted = data.ConsumeBool(), tooFew = data.ConsumeIntegralInRange(0, 15) == 0;
  Points from, to;
  anyPairs(data, from, to);
  const std::vector<SVec2d> wideFrom = widened(from), wideTo = widened(to);
  std::vector<double> weights;
  for (std::size_t i = tooFew; weighted && i < from.size(); ++i)
    weights.push_back(data.ConsumeBool() ? 1.0 : anyReal<double>(data));

  MotionEstimate motion, about;
  const bool fit = from.size() == to.size() && from.size() >= 5;
  const bool bad = fit && !weights.empty() && weights.size() != from.size();
  MIREL_CHECK(refused([&] { motion = MotionEstimate::estimate(wideFrom, wideTo, weights); }) == bad);
  MIREL_CHECK(refused([&] { about = MotionEstimate::estimate(wideFrom, wideTo, weights, center); }) == bad);
  checkFigures(motion, wideFrom, wideTo);
  checkFigures(about, wideFrom, wideTo);
  if (bad) return;
  limitCpuVariant(CpuVariant::baseline);
  MIREL_CHECK(same(motion, MotionEstimate::estimate(from, to, weights)));
  MIREL_CHECK(same(about, MotionEstimate::estimate(wideFrom, wideTo, weights, center)));
}
