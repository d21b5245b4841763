/// A bar on standard error for long work.
#pragma once

#include <chrono>

namespace mirel {

/// Shows itself only when standard error is a terminal, and clears its line at the end.
class Progress {
 public:
  /// @param total  steps in all, 0 when not known
  Progress(int total, bool wanted);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  /// One more step is done.
  void step();

 private:
  int total_;
  bool shown_;
  int done_ = 0;
  std::chrono::steady_clock::time_point start_, drawn_;
};

}  // namespace mirel
