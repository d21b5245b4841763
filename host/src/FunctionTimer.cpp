#include <MirelCore/FunctionTimer.h>
#include <MirelCore/Log.h>

#include <cstdarg>
#include <cstdio>

namespace MirelCore {
namespace {

constexpr int timingLevel = 1000;

}  // namespace

FunctionTimer::FunctionTimer(const char* format, ...) : start_(std::chrono::steady_clock::now()) {
  if (!shouldLog(timingLevel)) return;
  char text[256];
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  if (length > 0) name_ = text;
}

FunctionTimer::~FunctionTimer() {
  if (name_.empty() || !shouldLog(timingLevel)) return;
  const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start_;
  log("FunctionTimer.cpp", __LINE__, "MirelCore::FunctionTimer", timingLevel, L"%hs: %.3f ms", name_.c_str(),
      elapsed.count());
}

}  // namespace MirelCore
