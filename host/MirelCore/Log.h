/// The host's log.
#pragma once

#include <VoskBase/Export.h>

#include <functional>
#include <string>

namespace MirelCore {

/// One line of the log.
struct LogRecord {
  const char* file = "";      ///< source file of the call
  unsigned line = 0;          ///< its line
  const char* function = "";  ///< function that logs
  int level = 0;              ///< 1 is urgent, higher numbers are chattier
  std::wstring message;       ///< formatted text
};

/// Whether lines of this level are wanted. Any number of threads.
HOST_API bool shouldLog(int level);

/// Formats one line (printf-style, "%hs" for narrow text) and hands it to the sink, whatever its level; callers ask
/// `shouldLog` first. One line at a time, from any thread. Never throws: an exception of the sink is dropped.
HOST_API void log(const char* file, unsigned line, const char* function, int level, const wchar_t* format, ...);

/// From now on lines up to `maxLevel` are wanted. Silent until this is called.
HOST_API void setLogLevel(int maxLevel);

/// Where lines go; an empty function restores standard error (as UTF-8). A sink may log, up to eight lines deep, and
/// may replace the sink itself.
HOST_API void setLogSink(std::function<void(const LogRecord&)> sink);

}  // namespace MirelCore
