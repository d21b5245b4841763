// The clock on a machine whose counter, or whose counter's frequency, cannot be read. This program carries the clock's
// source and stands in for the two imports of the system's library.
#include "Check.h"

#include <MirelAlgorithms/frame/Timestamp.h>
#include <windows.h>

#include <cstdint>

using namespace MirelAlgorithms;

namespace {

bool counterWorks, frequencyWorks;

BOOL WINAPI readCounter(LARGE_INTEGER* ticks) {
  ticks->QuadPart = 12'345;
  return counterWorks;
}

BOOL WINAPI readFrequency(LARGE_INTEGER* frequency) {
  frequency->QuadPart = 10'000;
  return frequencyWorks;
}

void followsTheTicks() {
  const std::uint64_t before = GetTickCount64();
  const double seconds = timestamp();
  const std::uint64_t milliseconds = timestampMS();
  const std::uint64_t after = GetTickCount64();
  CHECK(static_cast<double>(before) * 0.001 <= seconds && seconds <= static_cast<double>(after) * 0.001);
  CHECK(before <= milliseconds && milliseconds <= after);
}

}  // namespace

extern "C" {
extern const decltype(&QueryPerformanceCounter) __imp_QueryPerformanceCounter = readCounter;
extern const decltype(&QueryPerformanceFrequency) __imp_QueryPerformanceFrequency = readFrequency;
}

int main() {
  counterWorks = frequencyWorks = true;
  CHECK(timestamp() == 1.2345);
  CHECK(timestampMS() == 1000);

  frequencyWorks = false;
  followsTheTicks();
  counterWorks = false;
  followsTheTicks();
  frequencyWorks = true;
  followsTheTicks();
  return failures != 0;
}
