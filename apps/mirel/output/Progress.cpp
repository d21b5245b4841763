#include "output/Progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace mirel {

namespace {

bool isTerminal(std::FILE* file) {
#ifdef _WIN32
  return _isatty(_fileno(file)) != 0;
#else
  return isatty(fileno(file)) != 0;
#endif
}

}  // namespace

Progress::Progress(int total, bool wanted)
    : total_(total), shown_(wanted && isTerminal(stderr)), start_(std::chrono::steady_clock::now()), drawn_(start_) {}

Progress::~Progress() {
  if (shown_) fmt::print(stderr, "\r{:70}\r", "");
}

void Progress::step() {
  using namespace std::chrono_literals;
  ++done_;
  const auto now = std::chrono::steady_clock::now();
  if (!shown_ || now - drawn_ < 100ms) return;
  drawn_ = now;
  const double seconds = std::chrono::duration<double>(now - start_).count();
  const double rate = done_ / seconds;
  if (total_ <= 0) {
    fmt::print(stderr, "\r  {} frames, {:.1f} per second ", done_, rate);
    return;
  }
  constexpr int width = 30;
  const int filled = std::min(width, width * done_ / total_);
  fmt::print(stderr, "\r  [{:#<{}}{:.<{}}] {}/{}  {:.0f} s left   ", "", filled, "", width - filled, done_, total_,
             std::max(0, total_ - done_) / rate);
}

}  // namespace mirel
