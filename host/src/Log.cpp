#include <MirelCore/Log.h>
#include <VoskBase/String.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cwchar>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace MirelCore {
namespace {

using Sink = std::function<void(const LogRecord&)>;

std::atomic<int> maxWantedLevel{INT_MIN};

void writeToStandardError(const LogRecord& record) {
  // As UTF-8: "%ls" would end the line at the first character that the locale does not have.
  const std::string message = VoskBase::String(record.message.c_str()).stringAnsi();
  std::fprintf(stderr, "%d %s: %s\n", record.level, record.function, message.c_str());
}

// One lock keeps lines whole and the sink from being called twice at once. It is recursive because a sink may log.
std::recursive_mutex& logMutex() {
  static std::recursive_mutex mutex;
  return mutex;
}

// Shared, so that a sink that replaces itself lives until it returns.
std::shared_ptr<const Sink>& currentSink() {
  static std::shared_ptr<const Sink> sink = std::make_shared<const Sink>(writeToStandardError);
  return sink;
}

// A sink that logs is called for its own lines too, but not for ever.
constexpr int deepestNesting = 8;
thread_local int nesting = 0;

struct Nested {
  Nested() { ++nesting; }
  ~Nested() { --nesting; }
};

constexpr std::size_t longestMessage = 1 << 24;  // characters; longer ones are not worth a line

std::wstring format(const wchar_t* text, std::va_list arguments) {
  for (std::size_t size = 256; size <= longestMessage; size *= 4) {
    std::vector<wchar_t> buffer(size);
    std::va_list copy;
    va_copy(copy, arguments);
    errno = 0;
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_copy has set it
    const int length = std::vswprintf(buffer.data(), buffer.size(), text, copy);
    va_end(copy);
    if (length >= 0) return std::wstring(buffer.data(), static_cast<std::size_t>(length));
    if (errno == EILSEQ) break;  // narrow text that the locale does not know
  }
  return text;  // the bare format says at least what happened
}

}  // namespace

bool shouldLog(int level) { return level <= maxWantedLevel.load(std::memory_order_relaxed); }

void log(const char* file, unsigned line, const char* function, int level, const wchar_t* text, ...) {
  if (nesting == deepestNesting) return;
  const Nested nested;
  std::va_list arguments;
  va_start(arguments, text);
  try {
    const LogRecord record{file, line, function, level, format(text, arguments)};
    const std::lock_guard lock(logMutex());
    const std::shared_ptr<const Sink> sink = currentSink();
    (*sink)(record);
  } catch (...) {
    // A line that cannot be written must not cost a result.
  }
  va_end(arguments);
}

void setLogLevel(int maxLevel) { maxWantedLevel = maxLevel; }

void setLogSink(Sink sink) {
  auto next = std::make_shared<const Sink>(sink ? std::move(sink) : Sink(writeToStandardError));
  const std::lock_guard lock(logMutex());
  currentSink().swap(next);
}

}  // namespace MirelCore
