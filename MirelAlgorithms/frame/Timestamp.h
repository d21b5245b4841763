/// Monotonic clock of the process.
///
///     const double start = timestamp();
///     ...
///     const double seconds = timestamp() - start;
#pragma once

#include <MirelAlgorithms/Export.h>

#include <cstdint>

namespace MirelAlgorithms {

/// Seconds since a fixed but arbitrary origin, at the full resolution of the machine's counter; where there is no
/// counter, at that of its millisecond tick. Any number of threads.
MIREL_API double timestamp();

/// The value of `timestamp()` when this function was first called in the process; the same on every later call.
/// Any number of threads; callers that come first at the same time get one value.
MIREL_API double timestamp0();

/// Milliseconds since the same origin as `timestamp()`.
///
/// The counter is divided into whole seconds before it is multiplied by 1000, so the value moves in steps of 1000;
/// only where there is no counter does it move in milliseconds. Any number of threads.
MIREL_API std::uint64_t timestampMS();

}  // namespace MirelAlgorithms
