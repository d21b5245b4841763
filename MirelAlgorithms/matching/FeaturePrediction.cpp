#include <MirelAlgorithms/matching/FeaturePrediction.h>

#include <iterator>
#include <thread>

namespace MirelAlgorithms {
namespace {

void enter(std::atomic<std::int32_t>& lockFlag) {
  while (lockFlag.exchange(1, std::memory_order_acquire) == 1) std::this_thread::yield();
}

void leave(std::atomic<std::int32_t>& lockFlag) { lockFlag.store(0, std::memory_order_release); }

bool isPosition(const SVec2d& p) {
  constexpr double largest = 1e6;
  return 0.0 <= p.x && p.x <= largest && 0.0 <= p.y && p.y <= largest;
}

}  // namespace

// A query. Queries hold it once, also those that ask for several positions: were the entry taken again inside, a writer
// that came between would wait for the outer query to leave, and the inner one for the writer.
class FeaturePrediction::Reading {
 public:
  explicit Reading(const FeaturePrediction& track) : readers_(track.readers_) {
    enter(track.lockFlag_);
    readers_.fetch_add(1, std::memory_order_relaxed);
    leave(track.lockFlag_);
  }
  ~Reading() { readers_.fetch_sub(1, std::memory_order_release); }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

 private:
  std::atomic<std::int32_t>& readers_;
};

// A change: nobody enters while it lasts, and it begins when the last reader has left.
class FeaturePrediction::Writing {
 public:
  explicit Writing(FeaturePrediction& track) : lockFlag_(track.lockFlag_) {
    enter(lockFlag_);
    while (track.readers_.load(std::memory_order_acquire) != 0) std::this_thread::yield();
  }
  ~Writing() { leave(lockFlag_); }
  Writing(const Writing&) = delete;
  Writing& operator=(const Writing&) = delete;

 private:
  std::atomic<std::int32_t>& lockFlag_;
};

// Both counters of an object that no thread is using are 0, so a copy has nothing to take over but the history.
FeaturePrediction::FeaturePrediction(const FeaturePrediction& other) : history_(other.history_) {}

FeaturePrediction& FeaturePrediction::operator=(const FeaturePrediction& other) {
  history_ = other.history_;
  return *this;
}

FeaturePrediction::~FeaturePrediction() = default;

void FeaturePrediction::update(const SVec2d& position, std::uint64_t time) {
  if (position == SVec2d(0.0, 0.0)) {
    const Writing writing(*this);
    history_.erase(time);
    return;
  }
  if (!isPosition(position) || time == 0) return;
  const Writing writing(*this);
  history_.insert_or_assign(time, position);
}

void FeaturePrediction::update(const cv::Mat&, std::uint64_t) {}

SVec2d FeaturePrediction::predictPosition(std::uint64_t time) const {
  const Reading reading(*this);
  return position(time);
}

SVec2d FeaturePrediction::predictSpeed(std::uint64_t time) const {
  const Reading reading(*this);
  const SVec2d before = position(time - 1), after = position(time + 1);
  return {(after.x - before.x) * 0.5, (after.y - before.y) * 0.5};
}

bool FeaturePrediction::predictable(std::uint64_t time) const {
  const Reading reading(*this);
  return covers(time);
}

bool FeaturePrediction::predictableSpeed(std::uint64_t time) const {
  const Reading reading(*this);
  return covers(time + 1) && covers(time - 1);
}

bool FeaturePrediction::covers(std::uint64_t time) const {
  return history_.size() >= 2 && time >= history_.begin()->first;
}

SVec2d FeaturePrediction::position(std::uint64_t time) const {
  const Entry first = history_.begin();
  if (history_.size() < 2) return {0.0, 0.0};
  if (history_.size() == 2) return lagrange(first, std::next(first), time);

  Entry c = history_.upper_bound(time);
  if (c == history_.end()) --c;
  if (c == first || c == std::next(first)) c = std::next(first, 2);
  return lagrange(std::prev(c, 2), std::prev(c), c, time);
}

// sum of p_i * product of (t - t_j) / product of (t_i - t_j) over j != i.
SVec2d FeaturePrediction::lagrange(Entry a, Entry b, Entry c, std::uint64_t time) {
  for (const Entry& node : {a, b, c})
    if (node->first == time) return node->second;
  const double t = static_cast<double>(time), t0 = static_cast<double>(a->first), t1 = static_cast<double>(b->first),
               t2 = static_cast<double>(c->first);
  const auto at = [&](double p0, double p1, double p2) {
    return p0 * (t - t1) * (t - t2) / ((t0 - t2) * (t0 - t1)) + p1 * (t - t0) * (t - t2) / ((t1 - t2) * (t1 - t0)) +
           p2 * (t - t0) * (t - t1) / ((t2 - t1) * (t2 - t0));
  };
  return {at(a->second.x, b->second.x, c->second.x), at(a->second.y, b->second.y, c->second.y)};
}

SVec2d FeaturePrediction::lagrange(Entry a, Entry b, std::uint64_t time) {
  for (const Entry& node : {a, b})
    if (node->first == time) return node->second;
  const double t = static_cast<double>(time), t0 = static_cast<double>(a->first), t1 = static_cast<double>(b->first);
  const auto at = [&](double p0, double p1) { return p0 * (t - t1) / (t0 - t1) + p1 * (t - t0) / (t1 - t0); };
  return {at(a->second.x, b->second.x), at(a->second.y, b->second.y)};
}

}  // namespace MirelAlgorithms
