/// How a run can end other than by success.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace mirel {

enum ExitStatus : int {
  success = 0,
  noResult = 1,       ///< the input was fine, but there is nothing to show for it
  unusable = 2,       ///< wrong usage or unusable input
  interrupted = 128,  ///< stopped by a signal, whose number is added as shells do: 130 for SIGINT, 143 for SIGTERM
};

/// Wrong usage or unusable input. The text is one line: where, what, and what would be right.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The user asked to stop.
class Interrupted : public std::runtime_error {
 public:
  explicit Interrupted(int signal)
      : std::runtime_error("interrupted, nothing written"), status_(ExitStatus::interrupted + signal) {}

  int status() const { return status_; }

 private:
  int status_;
};

/// What went wrong, in one line; without the source places that OpenCV puts around its messages.
std::string oneLine(const std::exception& error);

/// A text, which may hold names of files, with blanks for line ends and other control characters.
std::string oneLine(std::string text);

}  // namespace mirel
