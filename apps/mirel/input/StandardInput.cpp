#include "input/StandardInput.h"

#include "Errors.h"
#include "output/Interrupt.h"

#ifdef _WIN32
#include <io.h>
#else
#include <poll.h>
#include <unistd.h>
#endif

namespace mirel {

namespace {

#ifdef _WIN32
void wait() {}
int readInto(std::vector<char>& block) { return _read(0, block.data(), static_cast<unsigned>(block.size())); }
#else
// In short steps: a signal that comes just before the waiting begins would not end it.
void wait() {
  constexpr int milliseconds = 100;
  pollfd input{STDIN_FILENO, POLLIN, 0};
  while (poll(&input, 1, milliseconds) <= 0) checkInterrupt();
}
ssize_t readInto(std::vector<char>& block) { return read(STDIN_FILENO, block.data(), block.size()); }
#endif

}  // namespace

std::size_t readSome(std::vector<char>& block) {
  wait();
  const auto count = readInto(block);
  checkInterrupt();
  if (count < 0) throw UsageError("-: cannot be read");
  return static_cast<std::size_t>(count);
}

}  // namespace mirel
