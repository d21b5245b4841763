/// Where a tracked feature will be, from where it was.
///
///     FeaturePrediction track;
///     track.update({100.0, 50.0}, 1);
///     track.update({103.0, 51.0}, 2);
///     if (track.predictable(3)) there = track.predictPosition(3);  // (106, 52)
#pragma once

#include <MirelAlgorithms/Export.h>
#include <MirelAlgorithms/Host.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <opencv2/core/mat.hpp>

namespace MirelAlgorithms {

/// The positions of one feature by time, continued by Lagrange polynomials of degree one or two.
///
/// Time stamps are counts of any unit; speeds are pixels per that unit. The polynomials see time stamps as doubles:
/// above 2^53 neighbouring ones become equal, and where two that a polynomial needs do, its result is not finite. The
/// history has no limit: positions stay until they are erased.
///
/// Any number of threads may call `update` and the queries on one object: readers share, a writer waits until they have
/// left, all by spinning on two atomics, without locks of the operating system. A query sees one history from beginning
/// to end. Copy and assign only objects that no other thread is using; a copy is an object of its own.
class MIREL_API FeaturePrediction {
 public:
  /// No positions.
  FeaturePrediction() = default;

  /// Copies the positions. @{
  FeaturePrediction(const FeaturePrediction& other);
  FeaturePrediction& operator=(const FeaturePrediction& other);
  /// @}

  virtual ~FeaturePrediction();

  /// Sets the position at a time, in place of an earlier one for that time; the position (0, 0) erases it.
  ///
  /// @param position  pixels. Without effect when a coordinate is negative, above 1e6 or not a number
  /// @param time      without effect when 0
  void update(const SVec2d& position, std::uint64_t time);

  /// Does nothing.
  void update(const cv::Mat& position, std::uint64_t time);

  /// Position at a time, pixels; (0, 0) with fewer than two positions.
  ///
  /// A time of the history gives the position stored for it. Otherwise two positions are continued linearly, three by
  /// a parabola, more by the parabola through the first position later than `time` (the last one when there is none)
  /// and the two before it, or through the first three where there are not two before it.
  SVec2d predictPosition(std::uint64_t time) const;

  /// Half the way from one unit before a time to one unit after it, pixels per unit. Before 0 comes 2^64 - 1, after
  /// 2^64 - 1 comes 0.
  SVec2d predictSpeed(std::uint64_t time) const;

  /// Whether there are two positions or more, not all of them later than `time`.
  bool predictable(std::uint64_t time) const;

  /// Whether positions are predictable one unit before and one unit after a time.
  bool predictableSpeed(std::uint64_t time) const;

 private:
  using History = std::map<std::uint64_t, SVec2d>;
  using Entry = History::const_iterator;
  class Reading;
  class Writing;

  SVec2d position(std::uint64_t time) const;
  bool covers(std::uint64_t time) const;
  static SVec2d lagrange(Entry a, Entry b, Entry c, std::uint64_t time);
  static SVec2d lagrange(Entry a, Entry b, std::uint64_t time);

  mutable std::atomic<std::int32_t> lockFlag_ = 0;  // 1 while a thread holds the entry
  mutable std::atomic<std::int32_t> readers_ = 0;   // inside a query
  History history_;
};

}  // namespace MirelAlgorithms
