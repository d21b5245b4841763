#include <MirelAlgorithms/frame/Timestamp.h>
#include <MirelAlgorithms/frame/internal/Clock.h>

#if defined(_WIN32)
#include <windows.h>
#else
#include <chrono>
#include <ctime>
#endif

namespace MirelAlgorithms {
namespace {

#if defined(_WIN32)

bool readCounter(Counter& counter) {
  LARGE_INTEGER ticks, frequency;
  if (!QueryPerformanceCounter(&ticks) || !QueryPerformanceFrequency(&frequency)) return false;
  counter = {ticks.QuadPart, frequency.QuadPart};
  return true;
}

std::uint64_t readTickCount() { return GetTickCount64(); }

#else

constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

bool readCounter(Counter& counter) {
  std::timespec now;
  if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) return false;
  counter = {now.tv_sec * nanosecondsPerSecond + now.tv_nsec, nanosecondsPerSecond};
  return true;
}

std::uint64_t readTickCount() {
  const auto sinceOrigin = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(sinceOrigin).count());
}

#endif

constexpr ClockSource machine{readCounter, readTickCount};

}  // namespace

double timestamp() { return seconds(machine); }

double timestamp0() {
  static const double first = timestamp();
  return first;
}

std::uint64_t timestampMS() { return milliseconds(machine); }

}  // namespace MirelAlgorithms
