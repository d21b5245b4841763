// The clock of the library, which this program is linked to, against the machine's counter.
#include "Check.h"

#include <MirelAlgorithms/frame/Timestamp.h>
#include <windows.h>

#include <cstdint>

using namespace MirelAlgorithms;

namespace {

struct Counter {
  std::int64_t ticks, frequency;
  double seconds() const { return static_cast<double>(ticks) / static_cast<double>(frequency); }
  std::uint64_t wholeSeconds() const { return static_cast<std::uint64_t>(ticks / frequency) * 1000; }
};

Counter counter() {
  LARGE_INTEGER ticks, frequency;
  CHECK(QueryPerformanceCounter(&ticks));
  CHECK(QueryPerformanceFrequency(&frequency));
  return {ticks.QuadPart, frequency.QuadPart};
}

void isTheCounter() {
  const Counter before = counter();
  const double seconds = timestamp();
  const std::uint64_t milliseconds = timestampMS();
  const Counter after = counter();
  CHECK(before.seconds() <= seconds && seconds <= after.seconds());
  CHECK(before.wholeSeconds() <= milliseconds && milliseconds <= after.wholeSeconds());
  CHECK(milliseconds % 1000 == 0);
}

void originIsLatchedByTheFirstCall() {
  Sleep(20);  // later than the library was loaded
  const double before = timestamp();
  const double origin = timestamp0();
  const double after = timestamp();
  CHECK(before <= origin && origin <= after);
  Sleep(20);
  CHECK(timestamp0() == origin);
  CHECK(timestamp() > origin);
}

}  // namespace

int main() {
  isTheCounter();
  originIsLatchedByTheFirstCall();
  return failures != 0;
}
