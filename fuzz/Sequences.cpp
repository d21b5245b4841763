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
#include <set>
#include <vector>

#include "Check.h"

namespace {

using namespace MirelAlgorithms;

template <class Real>
bool same(const std::vector<Real>& a, const std::vector<Real>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](Real x, Real y) {
    return std::memcmp(&x, &y, sizeof x) == 0 || (std::isnan(x) && std::isnan(y));
  });
}

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
  const std::span<const float> whole(samples.data(), count);
  std::vector<Filter> stepped = filters;
  std::vector<float> wanted, found(count);
  for (std::size_t i = 0; i < count; ++i) {
    Filter& filter = stepped[i % channels];
    filter.update(samples[i]);
    MIREL_CHECK(filter.updates() == i / channels + 1);
    MIREL_CHECK(filter.updates() > 500 || filter.value() == 0.0f);
    wanted.push_back(filter.value());
  }
  const std::size_t cut = std::min<std::size_t>(data.ConsumeIntegral<uint16_t>(), count) / channels * channels;
  Filter::process(filters, whole.first(cut), std::span(found).first(cut));
  Filter::process(filters, whole.subspan(cut), std::span(found).subspan(cut));
  MIREL_CHECK(same(found, wanted));
  Filter& first = filters.front();
  first.reset();
  std::vector<float> alone(samples), after;
  Filter fresh = first;
  first.process(alone, alone);
  for (const float sample : samples) {
    fresh.update(sample);
    after.push_back(fresh.value());
  }
  MIREL_CHECK(same(alone, after));
  MIREL_CHECK(refused([&] { first.process(samples, std::span(alone).first(samples.size() / 2)); }) == !samples.empty());
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
  if (data.ConsumeBool()) sections.front() = Butterworth();
  data.ConsumeBool() ? filterAtOnce(data, sections) : filterAtOnce(data, bands);
}

void smoother(FuzzedDataProvider& data) {
  const int window = data.ConsumeBool() ? 2 * data.ConsumeIntegralInRange(1, 13) + 1 : data.ConsumeIntegral<int>();
  std::vector<double> in(data.ConsumeIntegralInRange<std::size_t>(0, 60));
  for (double& sample : in) sample = anyReal<double>(data);
  const std::vector<double> before = in;
  std::vector<double> out(data.ConsumeIntegralInRange<std::size_t>(0, 3), 17.0), outBefore = out;
  const bool fits =
      window >= 5 && window <= 25 && window % 2 == 1 && in.size() >= static_cast<std::size_t>(window) / 2 + 2;
  MIREL_CHECK(sgCubicSmoother(in, out, window) == fits);
  MIREL_CHECK(same(in, before) && (fits ? out.size() == in.size() : out == outBefore));
  MIREL_CHECK(sgCubicSmoother(in, in, window) == fits);
  MIREL_CHECK(same(in, fits ? out : before));
  const auto isFinite = [](double x) { return std::abs(x) < 1e30; };
  if (fits && std::all_of(before.begin(), before.end(), isFinite))
    MIREL_CHECK(std::all_of(out.begin(), out.end(), [](double x) { return std::isfinite(x); }));
}

cv::Vec3f anyVector(FuzzedDataProvider& data) {
  const float x = anyReal<float>(data), y = anyReal<float>(data);
  return {x, y, anyReal<float>(data)};
}

bool isModest(const cv::Vec3f& v) { return cv::norm(v) < 1e6; }

void inertial(FuzzedDataProvider& data) {
  AccelIntegrator integrator;
  MayhonyAHRS attitude(0.6f, 0.15f, data.ConsumeBool() ? 0.04f : anyReal<float>(data));
  bool modest = true;
  for (int left = data.ConsumeIntegralInRange(0, 40); left > 0; --left) {
    const cv::Vec3f gyro = anyVector(data), accel = anyVector(data),
                    motion = data.ConsumeBool() ? gyro : anyVector(data);
    const float dt = data.ConsumeBool() ? 0.01f : anyReal<float>(data);
    modest = modest && isModest(gyro) && isModest(accel) && std::abs(dt) < 1e3f;
    const cv::Vec4f before = attitude.value();
    const bool still = attitude.standstill(motion);
    attitude.update(gyro, accel, motion, dt);
    integrator.update(accel, dt);
    if (still) MIREL_CHECK(std::memcmp(before.val, attitude.value().val, sizeof before.val) == 0);
    const double length = cv::norm(attitude.value());
    MIREL_CHECK(!modest || std::abs(length - 1) < 1e-5);
    MIREL_CHECK(!modest || std::abs(cv::norm(attitude.gravity()) - 1) < 1e-4);
    const cv::Vec3f angles = attitude.angles();
    MIREL_CHECK(!modest || (angles[0] >= 0 && angles[0] <= 3.1416f));
    MIREL_CHECK(!modest || isModest(integrator.speed() / 1e4f));
    if (data.ConsumeIntegralInRange(0, 15) > 0) continue;
    attitude.reset();
    integrator.reset();
    modest = true;
    MIREL_CHECK(attitude.value() == cv::Vec4f(0, 0, 0, 1) && integrator.position() == cv::Vec3f());
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
    const FeaturePrediction copy(track);
    const SVec2d there = copy.predictPosition(asked), speed = track.predictSpeed(asked);
    if (!enough) MIREL_CHECK(there == SVec2d(0, 0) && speed == SVec2d(0, 0));
    if (enough && model.count(asked)) MIREL_CHECK(there == model[asked]);
    const SVec2d before = copy.predictPosition(asked - 1), after = copy.predictPosition(asked + 1);
    MIREL_CHECK(same<double>({speed.x, speed.y}, {(after.x - before.x) * 0.5, (after.y - before.y) * 0.5}));
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
    MIREL_CHECK(sets.findPartition(a) == sets.findPartition(b));
    MIREL_CHECK(sets.getCardinality(a) == std::count(label.begin(), label.end(), to));
    if (left % 8) continue;
    const UnionFind copy(sets);
    const std::vector<std::vector<int>> partitions = sets.getPartitions();
    MIREL_CHECK(static_cast<int>(partitions.size()) == copy.getNumPartitions());
    MIREL_CHECK(partitions.size() == std::set<int>(label.begin(), label.end()).size());
    int last = -1;
    for (int k = 0; k < static_cast<int>(partitions.size()); ++k) {
      const std::vector<int>& members = partitions[static_cast<std::size_t>(k)];
      const int representative = sets.getPartitionRepresentative(k);
      MIREL_CHECK(representative > last && sets.getCardinalityIndex(k) == static_cast<int>(members.size()));
      last = representative;
      MIREL_CHECK(std::is_sorted(members.begin(), members.end()));
      for (const int e : members)
        MIREL_CHECK(sets.findPartition(e) == representative && sets.findPartitionIndex(e) == k &&
                    label[static_cast<std::size_t>(e)] == label[static_cast<std::size_t>(members[0])]);
    }
    MIREL_CHECK(refused([&] { sets.getCardinalityIndex(static_cast<int>(partitions.size())); }));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  FuzzedDataProvider data(bytes, size);
  for (int left = 3; left > 0 && data.remaining_bytes() > 0; --left) {
    constexpr void (*sequences[])(FuzzedDataProvider&) = {butterworth, smoother, inertial, prediction, sets};
    data.PickValueInArray(sequences)(data);
  }
  return 0;
}
