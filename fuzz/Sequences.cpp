/// Sequences of calls: filters give in one call what they give step by step, sets and histories do what the plainest
/// containers do.
#include <MirelAlgorithms/filters/AccelIntegrator.h>
#include <MirelAlgorithms/filters/Butterworth.h>
#include <MirelAlgorithms/filters/MayhonyAHRS.h>
#include <MirelAlgorithms/filters/SavitzkyGolay.h>
#include <MirelAlgorithms/geometry/UnionFind.h>
#include <MirelAlgorithms/matching/FeaturePrediction.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <vector>

#include "Check.h"

namespace {

using namespace MirelAlgorithms;

// Runs of equal steps: outputs are withheld for 500 samples, and few inputs are so long.
std::vector<float> anySamples(FuzzedDataProvider& data) {
  std::vector<float> samples;
  for (int left = data.ConsumeIntegralInRange(0, 12); left > 0; --left) {
    const float first = anyReal<float>(data), step = data.ConsumeIntegralInRange(-4, 4) / 16.0f;
    const int count = data.ConsumeIntegralInRange(1, 200);
    for (int i = 0; i < count; ++i) samples.push_back(first + static_cast<float>(i % 7) * step);
  }
  return samples;
}

template <class Filter>
void filterAtOnce(FuzzedDataProvider& data, std::vector<Filter> filters) {
  const std::vector<float> samples = anySamples(data);
  const std::size_t channels = filters.size(), count = samples.size() / channels * channels;
  std::vector<Filter> stepped = filters;
  std::vector<float> wanted, found(count);
  for (std::size_t i = 0; i < count; ++i) {
    stepped[i % channels].update(samples[i]);
    wanted.push_back(stepped[i % channels].value());
  }
  const std::size_t cut = std::min<std::size_t>(data.ConsumeIntegral<uint16_t>(), count) / channels * channels;
  Filter::process(filters, std::span(samples).first(cut), std::span(found).first(cut));
  Filter::process(filters, std::span(samples).subspan(cut, count - cut), std::span(found).subspan(cut));
  MIREL_CHECK(sameBits(found, wanted));
}

void butterworth(FuzzedDataProvider& data) {
  std::vector<Butterworth> sections;
  std::vector<ButterworthBandpass> bands;
  for (int left = data.ConsumeIntegralInRange(1, 6); left > 0; --left) {
    const float low = anyReal<float>(data), high = anyReal<float>(data), resonance = anyReal<float>(data);
    const int rate = data.ConsumeBool() ? 100 : data.ConsumeIntegral<int>();
    sections.emplace_back(low, rate, data.PickValueInArray({Butterworth::Lowpass, Butterworth::Highpass}), resonance);
    bands.emplace_back(low, high, rate, resonance);
  }
  data.ConsumeBool() ? filterAtOnce(data, sections) : filterAtOnce(data, bands);
}

void smoother(FuzzedDataProvider& data) {
  const int window = data.ConsumeBool() ? 2 * data.ConsumeIntegralInRange(1, 13) + 1 : data.ConsumeIntegral<int>();
  std::vector<double> in(data.ConsumeIntegralInRange<std::size_t>(0, 60));
  for (double& sample : in) sample = anyReal<double>(data);
  const std::vector<double> before = in;
  std::vector<double> out;
  const bool fits =
      window >= 5 && window <= 25 && window % 2 == 1 && in.size() >= static_cast<std::size_t>(window) / 2 + 2;
  MIREL_CHECK(sgCubicSmoother(in, out, window) == fits);
  MIREL_CHECK(sameBits(in, before) && out.size() == (fits ? in.size() : 0));
  MIREL_CHECK(sgCubicSmoother(in, in, window) == fits);
  MIREL_CHECK(sameBits(in, fits ? out : before));
}

cv::Vec3f anyVector(FuzzedDataProvider& data) {
  return {anyReal<float>(data), anyReal<float>(data), anyReal<float>(data)};  // from left to right
}

void inertial(FuzzedDataProvider& data) {
  AccelIntegrator integrator;
  MayhonyAHRS attitude(0.6f, 0.15f, data.ConsumeBool() ? 0.04f : anyReal<float>(data));
  bool modest = true;
  for (int left = data.ConsumeIntegralInRange(0, 40); left > 0; --left) {
    const cv::Vec3f gyro = anyVector(data), accel = anyVector(data);
    const cv::Vec3f motion = data.ConsumeBool() ? gyro : anyVector(data);
    const float dt = data.ConsumeBool() ? 0.01f : anyReal<float>(data);
    modest = modest && cv::norm(gyro) < 1e6 && cv::norm(accel) < 1e6 && std::abs(dt) < 1e3f;
    const cv::Vec4f before = attitude.value();
    const bool still = attitude.standstill(motion);
    attitude.update(gyro, accel, motion, dt);
    integrator.update(accel, dt);
    MIREL_CHECK(!still || std::memcmp(before.val, attitude.value().val, sizeof before.val) == 0);
    if (!modest) continue;
    MIREL_CHECK(std::abs(cv::norm(attitude.value()) - 1) < 1e-5 && std::abs(cv::norm(attitude.gravity()) - 1) < 1e-4);
    MIREL_CHECK(attitude.angles()[0] >= 0 && attitude.angles()[0] <= 3.1416f && cv::norm(integrator.speed()) < 1e10);
  }
}

void prediction(FuzzedDataProvider& data) {
  FeaturePrediction track;
  std::map<std::uint64_t, SVec2d> model;
  const auto anyTime = [&] {
    return data.ConsumeIntegralInRange(0, 7) ? data.ConsumeIntegralInRange<std::uint64_t>(0, 12)
                                             : data.ConsumeIntegral<std::uint64_t>();
  };
  for (int left = data.ConsumeIntegralInRange(0, 60); left > 0; --left) {
    const std::uint64_t time = anyTime(), asked = anyTime();
    const SVec2d p(anyReal<double>(data), anyReal<double>(data));
    track.update(p, time);
    if (p == SVec2d(0, 0))
      model.erase(time);
    else if (time != 0 && p.x >= 0 && p.x <= 1e6 && p.y >= 0 && p.y <= 1e6)
      model[time] = p;

    const bool enough = model.size() >= 2;
    const auto covers = [&](std::uint64_t t) { return enough && model.begin()->first <= t; };
    MIREL_CHECK(track.predictable(asked) == covers(asked));
    MIREL_CHECK(track.predictableSpeed(asked) == (covers(asked - 1) && covers(asked + 1)));
    const SVec2d there = track.predictPosition(asked), speed = track.predictSpeed(asked);
    if (model.count(asked)) MIREL_CHECK(there == (enough ? model[asked] : SVec2d(0, 0)));
    const SVec2d before = track.predictPosition(asked - 1), after = track.predictPosition(asked + 1);
    MIREL_CHECK(sameBits(speed.x, (after.x - before.x) * 0.5) && sameBits(speed.y, (after.y - before.y) * 0.5));
  }
}

void sets(FuzzedDataProvider& data) {
  const int n = data.ConsumeIntegralInRange(-2, 200);
  UnionFind sets(n);
  std::vector<int> label(static_cast<std::size_t>(std::max(n, 0)));
  std::iota(label.begin(), label.end(), 0);
  const auto isElement = [&](int e) { return e >= 0 && e < n; };
  for (int left = data.ConsumeIntegralInRange(0, 60); left > 0; --left) {
    const int a = data.ConsumeIntegralInRange(-1, n + 1), b = data.ConsumeIntegralInRange(-1, n + 1);
    MIREL_CHECK(refused([&] { sets.unionPartitions(a, b); }) == !(isElement(a) && isElement(b)));
    if (!isElement(a) || !isElement(b)) continue;
    const int from = label[static_cast<std::size_t>(b)], to = label[static_cast<std::size_t>(a)];
    std::replace(label.begin(), label.end(), from, to);
    MIREL_CHECK(sets.getCardinality(b) == std::count(label.begin(), label.end(), to));
    MIREL_CHECK(sets.findPartition(a) == sets.getPartitionRepresentative(sets.findPartitionIndex(b)));
  }
  std::map<int, std::vector<int>> wanted;
  for (int e = 0; e < n; ++e) wanted[label[static_cast<std::size_t>(e)]].push_back(e);
  const std::vector<std::vector<int>> found = sets.getPartitions();
  MIREL_CHECK(found.size() == wanted.size());
  for (const std::vector<int>& members : found)
    MIREL_CHECK(members == wanted[label[static_cast<std::size_t>(members.at(0))]]);
}

}  // namespace

void feed(FuzzedDataProvider& data) {
  for (int left = 3; left > 0 && data.remaining_bytes() > 0; --left) {
    constexpr void (*sequences[])(FuzzedDataProvider&) = {butterworth, smoother, inertial, prediction, sets};
    data.PickValueInArray(sequences)(data);
  }
}
