/// Image motion: figures and mapping that fit each other, also for hostile points; the same for both precisions of the
/// points and for every instruction set.
#include <MirelAlgorithms/frame/internal/CpuVariant.h>
#include <MirelAlgorithms/matching/MotionEstimate.h>

#include <cmath>
#include <vector>

#include "Check.h"

namespace {

using namespace MirelAlgorithms;
using Points = std::vector<SVec2d>;

bool same(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b)); }

bool same(const MotionEstimate& a, const MotionEstimate& b) {
  for (int i = 0; i < 9; ++i)
    if (!same(a.matrix[i], b.matrix[i])) return false;
  return same(a.translation, b.translation) && same(a.scale, b.scale) && same(a.rotation, b.rotation) &&
         same(a.deviation, b.deviation) && same(a.meanResidual, b.meanResidual) &&
         same(a.meanInlierResidual, b.meanInlierResidual) && a.points == b.points && a.outlierRows == b.outlierRows &&
         same(a.center[0], b.center[0]) && same(a.center[1], b.center[1]);
}

// In single precision, so that both kinds of points can hold it.
float coordinate(FuzzedDataProvider& data, bool hostile) {
  return hostile ? anyReal<float>(data) : static_cast<float>(data.ConsumeIntegralInRange(-800, 800)) / 4;
}

struct Pairs {
  Points from, to;
  std::vector<cv::Vec2f> singleFrom, singleTo;
};

// Points that a motion moves, then errors.
Pairs anyPairs(FuzzedDataProvider& data) {
  const std::size_t count = data.ConsumeIntegralInRange<std::size_t>(0, 24);
  const bool hostile = data.ConsumeIntegralInRange(0, 3) == 0, regular = data.ConsumeBool();
  const float dx = coordinate(data, hostile), turn = data.ConsumeFloatingPointInRange(-1.0f, 1.0f);
  Pairs pairs;
  for (std::size_t i = 0; i < count; ++i) {
    const cv::Vec2f p(coordinate(data, hostile), coordinate(data, hostile));
    cv::Vec2f q(p[0] - turn * p[1] + dx, turn * p[0] + p[1]);
    if (!regular || data.ConsumeIntegralInRange(0, 7) == 0) q = {coordinate(data, hostile), coordinate(data, hostile)};
    pairs.singleFrom.push_back(p);
    pairs.singleTo.push_back(q);
    pairs.from.emplace_back(p[0], p[1]);
    pairs.to.emplace_back(q[0], q[1]);
  }
  if (data.ConsumeIntegralInRange(0, 15) == 0 && count > 0) {
    pairs.to.pop_back();
    pairs.singleTo.pop_back();
  }
  return pairs;
}

void checkFigures(const MotionEstimate& motion, const Pairs& pairs) {
  const SVec2d p(3, 4), mapped = motion.apply(p);
  if (!motion.isValid()) {
    MIREL_CHECK(same(motion, MotionEstimate()) && mapped == p);
    return;
  }
  const auto count = static_cast<int>(pairs.from.size());
  MIREL_CHECK(count >= 5 && motion.points == count);
  MIREL_CHECK(motion.outlierRows >= 0 && 2 * count - motion.outlierRows >= 8);
  MIREL_CHECK(motion.factor == 1 && (motion.matrix[8] == 1 || std::isnan(motion.matrix[8])));
  MIREL_CHECK(motion.translation >= 0 && !(motion.scale < 0) && !(std::abs(motion.rotation) > 3.1416));
  MIREL_CHECK(!(motion.meanResidual < 0) && !(motion.meanInlierResidual < 0) && !(motion.deviation < 0));

  const double *h = motion.matrix, *c = motion.center, dx = p.x - c[0], dy = p.y - c[1];
  const double s = 1 / (h[6] * dx + h[7] * dy + h[8]);
  MIREL_CHECK(same(mapped.x, (h[0] * dx + h[1] * dy + h[2]) * s + c[0]));
  MIREL_CHECK(same(mapped.y, (h[3] * dx + h[4] * dy + h[5]) * s + c[1]));
  double sum = 0;
  for (std::size_t i = 0; i < pairs.from.size(); ++i) {
    const SVec2d there = motion.apply(pairs.from[i]);
    sum += std::hypot(there.x - pairs.to[i].x, there.y - pairs.to[i].y);
  }
  if (std::isfinite(sum)) MIREL_CHECK(std::abs(sum / count - motion.meanResidual) <= 1e-9 * (1 + sum));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  FuzzedDataProvider data(bytes, size);
  const SVec2d center(anyReal<double>(data), anyReal<double>(data));
  const bool weighted = data.ConsumeBool(), tooFew = data.ConsumeIntegralInRange(0, 15) == 0;
  const Pairs pairs = anyPairs(data);
  std::vector<double> weights;
  for (std::size_t i = tooFew; weighted && i < pairs.from.size(); ++i)
    weights.push_back(data.ConsumeBool() ? 1.0 : anyReal<double>(data));

  limitCpuVariant(CpuVariant::baseline);
  MotionEstimate motion, about, single;
  const bool fit = pairs.from.size() == pairs.to.size() && pairs.from.size() >= 5;
  const bool bad = fit && !weights.empty() && weights.size() != pairs.from.size();
  MIREL_CHECK(refused([&] { motion = MotionEstimate::estimate(pairs.from, pairs.to, weights); }) == bad);
  MIREL_CHECK(refused([&] { about = MotionEstimate::estimate(pairs.from, pairs.to, weights, center); }) == bad);
  MIREL_CHECK(refused([&] { single = MotionEstimate::estimate(pairs.singleFrom, pairs.singleTo, weights); }) == bad);
  MIREL_CHECK(same(motion, single));
  checkFigures(motion, pairs);
  checkFigures(about, pairs);
  if (bad) return 0;
  limitCpuVariant(CpuVariant::avx512);
  MIREL_CHECK(same(motion, MotionEstimate::estimate(pairs.from, pairs.to, weights)));
  MIREL_CHECK(same(about, MotionEstimate::estimate(pairs.from, pairs.to, weights, center)));
  const cv::Vec2f p(3, 4), q = single.apply(p);
  const SVec2d wide = motion.apply(SVec2d(3, 4));
  MIREL_CHECK(same(q[0], static_cast<float>(wide.x)) && same(q[1], static_cast<float>(wide.y)));
  single.reset();
  MIREL_CHECK(same(single, MotionEstimate()));
  return 0;
}
