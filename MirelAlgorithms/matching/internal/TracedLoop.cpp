#include <MirelAlgorithms/matching/internal/TracedLoop.h>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace MirelAlgorithms {

std::uint32_t osThreadId() {
#if defined(_WIN32)
  return GetCurrentThreadId();
#else
  return static_cast<std::uint32_t>(syscall(SYS_gettid));
#endif
}

}  // namespace MirelAlgorithms
