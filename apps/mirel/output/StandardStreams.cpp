#include "output/StandardStreams.h"

#ifndef _WIN32
#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>
#endif

namespace mirel {

void keepStandardStreams() {
#ifndef _WIN32
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0) continue;
    open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);  // takes the lowest number that is free
  }
#endif
}

}  // namespace mirel
