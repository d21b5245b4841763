/// How long a function takes, as a line of the log.
#pragma once

#include <VoskBase/Export.h>

#include <chrono>
#include <string>

namespace MirelCore {

/// Times from its construction to its destruction and logs "<name>: <milliseconds> ms" at level 1000.
class HOST_API FunctionTimer {
 public:
  /// @param format  printf-style name of what is timed
  explicit FunctionTimer(const char* format, ...);
  FunctionTimer(const FunctionTimer&) = delete;
  FunctionTimer& operator=(const FunctionTimer&) = delete;
  virtual ~FunctionTimer();

 private:
  std::string name_;
  std::chrono::steady_clock::time_point start_;
};

}  // namespace MirelCore
