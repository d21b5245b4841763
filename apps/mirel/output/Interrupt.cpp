#include "output/Interrupt.h"

#include "Errors.h"

#include <csignal>

namespace mirel {

namespace {

volatile std::sig_atomic_t stopAsked = 0;

extern "C" void rememberStop(int) { stopAsked = 1; }

}  // namespace

void watchInterrupts() {
  std::signal(SIGINT, rememberStop);
  std::signal(SIGTERM, rememberStop);
}

void checkInterrupt() {
  if (stopAsked != 0) throw Interrupted();
}

}  // namespace mirel
