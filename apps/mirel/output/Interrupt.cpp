#include "output/Interrupt.h"

#include "Errors.h"

#include <csignal>

namespace mirel {

namespace {

volatile std::sig_atomic_t stopAsked = 0;

extern "C" void rememberStop(int signal) { stopAsked = signal; }

}  // namespace

void watchInterrupts() {
  std::signal(SIGINT, rememberStop);
  std::signal(SIGTERM, rememberStop);
#ifdef SIGHUP
  if (std::signal(SIGHUP, rememberStop) == SIG_IGN) std::signal(SIGHUP, SIG_IGN);  // nohup
#endif
}

void checkInterrupt() {
  if (stopAsked != 0) throw Interrupted(stopAsked);
}

}  // namespace mirel
