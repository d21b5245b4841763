/// Stopping in an orderly way when the user asks for it.
#pragma once

namespace mirel {

/// From now on SIGINT, SIGTERM and the terminal's hang-up are remembered rather than ending the program at once.
void watchInterrupts();

/// Throws `Interrupted` when such a signal has come.
void checkInterrupt();

}  // namespace mirel
