/// The two clocks of a machine, and what is made of them. Apart from the exported functions so that a machine without
/// a counter can be tested on one that has it.
#pragma once

#include <cstdint>

namespace MirelAlgorithms {

/// High-resolution counter: ticks, and ticks per second.
struct Counter {
  std::int64_t ticks;
  std::int64_t frequency;
};

/// A machine's clocks.
struct ClockSource {
  bool (*counter)(Counter&);     ///< false when the machine has no such counter
  std::uint64_t (*tickCount)();  ///< milliseconds
};

/// Seconds: ticks / frequency, else milliseconds times 0.001.
inline double seconds(const ClockSource& source) {
  Counter counter;
  if (source.counter(counter)) return static_cast<double>(counter.ticks) / static_cast<double>(counter.frequency);
  return static_cast<double>(source.tickCount()) * 0.001;
}

/// Milliseconds: whole seconds of the counter times 1000, else the tick count.
inline std::uint64_t milliseconds(const ClockSource& source) {
  Counter counter;
  if (source.counter(counter)) return static_cast<std::uint64_t>(counter.ticks / counter.frequency * 1000);
  return source.tickCount();
}

}  // namespace MirelAlgorithms
