/// Image and video decoders write remarks of their own to standard error; the tool says it in one line instead.
#pragma once

namespace mirel {

/// Standard error leads nowhere while this lives. One at a time, on one thread.
class QuietStderr {
 public:
  QuietStderr();
  QuietStderr(const QuietStderr&) = delete;
  QuietStderr& operator=(const QuietStderr&) = delete;
  ~QuietStderr();

 private:
  int saved_;
};

}  // namespace mirel
